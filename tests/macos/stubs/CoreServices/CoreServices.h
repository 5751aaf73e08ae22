// Declarations of the CoreServices functions that the macOS adapters use, written by hand after the
// published interface. The cross build links by them, the seam tests compile by them.
#pragma once

#include <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif

// Volumes, of CarbonCore. Its records are aligned to two bytes.

#pragma pack(push, 2)

typedef SInt16 FSVolumeRefNum;
typedef UInt32 FSCatalogInfoBitmap;
typedef UInt32 FSVolumeInfoBitmap;
typedef unsigned long ItemCount;
typedef struct FSSpec FSSpec;
typedef struct FSVolumeInfo FSVolumeInfo;

enum { kFSCatInfoVolume = 0x00000004, kFSVolInfoNone = 0x0000 };

typedef struct FSRef {
  UInt8 hidden[80];
} FSRef;

typedef struct HFSUniStr255 {
  UInt16 length;
  UniChar unicode[255];
} HFSUniStr255;

typedef struct {
  UInt16 highSeconds;
  UInt32 lowSeconds;
  UInt16 fraction;
} UTCDateTime;

typedef struct {
  UInt32 userID;
  UInt32 groupID;
  UInt8 reserved1;
  UInt8 userAccess;
  UInt16 mode;
  void* fileSec;
} FSPermissionInfo;

typedef struct FSCatalogInfo {
  UInt16 nodeFlags;
  FSVolumeRefNum volume;
  UInt32 parentDirID;
  UInt32 nodeID;
  UInt8 sharingFlags;
  UInt8 userPrivileges;
  UInt8 reserved1;
  UInt8 reserved2;
  UTCDateTime createDate;
  UTCDateTime contentModDate;
  UTCDateTime attributeModDate;
  UTCDateTime accessDate;
  UTCDateTime backupDate;
  FSPermissionInfo permissions;
  UInt8 finderInfo[16];
  UInt8 extFinderInfo[16];
  UInt64 dataLogicalSize;
  UInt64 dataPhysicalSize;
  UInt64 rsrcLogicalSize;
  UInt64 rsrcPhysicalSize;
  UInt32 valence;
  UInt32 textEncodingHint;
} FSCatalogInfo;

#pragma pack(pop)

SInt32 FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory);
SInt16 FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                        HFSUniStr255* outName, FSSpec* fsSpec, FSRef* parentRef);
SInt16 FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount volumeIndex, FSVolumeRefNum* actualVolume,
                       FSVolumeInfoBitmap whichInfo, FSVolumeInfo* info, HFSUniStr255* volumeName,
                       FSRef* rootDirectory);

// Metadata.

typedef struct __MDItem* MDItemRef;

MDItemRef MDItemCreateWithURL(CFAllocatorRef allocator, CFURLRef url);
CFTypeRef MDItemCopyAttribute(MDItemRef item, CFStringRef name);

#ifdef __cplusplus
}
#endif
