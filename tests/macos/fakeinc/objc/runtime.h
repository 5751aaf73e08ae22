#pragma once

typedef struct objc_class* Class;
typedef struct objc_object* id;
typedef struct objc_selector* SEL;

#ifdef __cplusplus
extern "C" {
#endif
Class objc_getClass(const char* name);
SEL sel_registerName(const char* name);
#ifdef __cplusplus
}
#endif
