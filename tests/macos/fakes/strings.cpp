// Text as CoreFoundation keeps it, in UTF-16, and as much of Unicode's rules as the tests ask for.

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <cstring>
#include <locale>

#include "fakes/objects.h"

using fakes::machine;

struct __CFCharacterSet {
  bool isOfPunctuation;
};

struct __CFLocale : fakes::Object {};

namespace {

__CFLocale rootLocale;
constexpr __CFCharacterSet alphanumerics = {false}, punctuation = {true};

/// A facet that can be made and destroyed here.
struct Conversion : std::codecvt<char16_t, char8_t, std::mbstate_t> {};

/// The UTF-8 of the text up to the first half of a surrogate pair; `used` becomes how far that is.
std::string converted(const std::u16string& text, std::size_t& used) {
  std::u8string bytes(text.size() * 3, u8'\0');
  std::mbstate_t state = {};
  const char16_t* from = nullptr;
  char8_t* to = nullptr;
  Conversion().out(state, text.data(), text.data() + text.size(), from, bytes.data(),
                   bytes.data() + bytes.size(), to);
  used = static_cast<std::size_t>(from - text.data());
  return {reinterpret_cast<const char*>(bytes.data()), static_cast<std::size_t>(to - bytes.data())};
}

CFStringRef stringWith(const char* function, std::optional<std::u16string> text) {
  auto* const string = text ? fakes::createdBy<__CFString>(function) : nullptr;
  if (string) string->text = std::move(*text);
  return string;
}

/// By the rules of Turkish, unless the root locale is asked for.
std::u16string lowered(const std::u16string& text, CFLocaleRef locale) {
  std::u16string result;
  for (const char16_t character : text) {
    const bool hasCase = (character >= u'A' && character <= u'Z') ||
                         (character >= u'\u00C0' && character <= u'\u00DE');
    if (character == u'I' && locale != &rootLocale) {
      result += u'\u0131';
    } else {
      result += hasCase ? static_cast<char16_t>(character + 0x20) : character;
    }
  }
  return result;
}

std::u16string withoutMarks(const std::u16string& text) {
  std::u16string result;
  for (const char16_t character : text) {
    constexpr char16_t acute = u'\u0301';
    if (character == u'\u00E9') {
      result += u'e';
    } else if (character == u'\u00C9') {
      result += u'E';
    } else if (character != acute) {
      result += character;
    }
  }
  return result;
}

}  // namespace

namespace fakes {

std::optional<std::string> utf8Of(const std::u16string& text) {
  std::size_t used = 0;
  auto bytes = converted(text, used);
  return used == text.size() ? std::optional(std::move(bytes)) : std::nullopt;
}

std::optional<std::u16string> utf16Of(const std::string& bytes) {
  const std::u8string source(bytes.begin(), bytes.end());
  std::u16string text(source.size(), u'\0');
  std::mbstate_t state = {};
  const char8_t* from = nullptr;
  char16_t* to = nullptr;
  const auto result = Conversion().in(state, source.data(), source.data() + source.size(), from,
                                      text.data(), text.data() + text.size(), to);
  if (!source.empty() && result != std::codecvt_base::ok) return std::nullopt;
  text.resize(static_cast<std::size_t>(to - text.data()));
  return text;
}

}  // namespace fakes

extern "C" {

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex size,
                                    CFStringEncoding encoding, Boolean isExternal) {
  if (encoding != kCFStringEncodingUTF8 || isExternal) std::abort();
  const std::string text(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
  return stringWith("CFStringCreateWithBytes", fakes::utf16Of(text));
}

CFStringRef CFStringCreateWithFileSystemRepresentation(CFAllocatorRef, const char* path) {
  auto text = fakes::utf16Of(path);
  if (!text && machine.decodesAllPaths) {
    text.emplace();
    for (const char* at = path; *at; ++at) *text += static_cast<unsigned char>(*at);  // Latin-1
  }
  return stringWith("CFStringCreateWithFileSystemRepresentation", std::move(text));
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef, CFIndex maxLength,
                                             CFStringRef string) {
  if (maxLength != 0) std::abort();
  return const_cast<CFMutableStringRef>(stringWith("CFStringCreateMutableCopy", string->text));
}

CFIndex CFStringGetLength(CFStringRef string) {
  return static_cast<CFIndex>(string->text.size());
}

CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding encoding,
                         UInt8 lossByte, Boolean isExternal, UInt8* buffer, CFIndex bufferSize,
                         CFIndex* usedSize) {
  if (encoding != kCFStringEncodingUTF8 || lossByte != 0 || isExternal) std::abort();
  std::size_t used = 0;
  const auto bytes = converted(string->text.substr(static_cast<std::size_t>(range.location),
                                                   static_cast<std::size_t>(range.length)),
                               used);
  const auto size = static_cast<CFIndex>(bytes.size());
  if (buffer && size > bufferSize) std::abort();
  if (buffer && size > 0) std::memcpy(buffer, bytes.data(), bytes.size());
  *usedSize = size;
  const bool fails = machine.refuses.contains(buffer ? "CFStringGetBytes" : "measuring");
  return fails ? 0 : static_cast<CFIndex>(used);
}

CFCharacterSetRef CFCharacterSetGetPredefined(CFCharacterSetPredefinedSet set) {
  if (set == kCFCharacterSetAlphaNumeric) return &alphanumerics;
  if (set != kCFCharacterSetPunctuation) std::abort();
  return &punctuation;
}

// Of the characters that are not ASCII, those beyond U+00BF are letters.
Boolean CFCharacterSetIsLongCharacterMember(CFCharacterSetRef set, UInt32 character) {
  const auto code = static_cast<unsigned char>(character);
  const bool isAscii = character < 0x80;
  if (!set->isOfPunctuation) return isAscii ? std::isalnum(code) != 0 : character >= 0xC0;
  return isAscii && std::strchr("!\"#%&'()*,-./:;?@[\\]_{}", code) != nullptr && code != 0;
}

CFLocaleRef CFLocaleGetSystem(void) {
  return &rootLocale;
}

void CFStringLowercase(CFMutableStringRef string, CFLocaleRef locale) {
  string->text = lowered(string->text, locale);
}

void CFStringFold(CFMutableStringRef string, CFStringCompareFlags flags, CFLocaleRef locale) {
  if (flags & kCFCompareDiacriticInsensitive) string->text = withoutMarks(string->text);
  if (flags & kCFCompareCaseInsensitive) string->text = lowered(string->text, locale);
}

}  // extern "C"
