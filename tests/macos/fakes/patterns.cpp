// Foundation's regular expressions, by the standard library's, on text in UTF-16 as there.

#include <cstdlib>
#include <regex>

#include "fakes/objects.h"

using fakes::Answer;
using fakes::Object;

namespace {

constexpr unsigned long notFound = 0x7FFFFFFFFFFFFFFF;

struct PatternClass : Object {
} theClass;

struct Range {
  unsigned long location, length;
};
struct Pattern : fakes::Counted {
  std::wregex expression;
};
struct Match : fakes::Counted {
  std::vector<Range> ranges;
};

/// A unit becomes a character: what is asked for and counted is in units.
std::wstring unitsOf(const void* string) {
  const auto& text = dynamic_cast<const __CFString&>(*fakes::objectOf(string)).text;
  return {text.begin(), text.end()};
}

const void* compiled(const void* text, const void* options) {
  if (options) std::abort();
  auto* const pattern = fakes::createdBy<Pattern>("regularExpressionWithPattern:options:error:");
  fakes::autorelease(pattern);
  try {
    if (pattern) pattern->expression = std::wregex(unitsOf(text));
  } catch (const std::regex_error&) {
    return nullptr;
  }
  return pattern;
}

Match* matchOf(const std::wsmatch& found) {
  auto* const match = fakes::createdBy<Match>("");
  for (std::size_t group = 0; group < found.size(); ++group) {
    const bool tookPart = found[group].matched;
    match->ranges.push_back(tookPart ? Range{static_cast<unsigned long>(found.position(group)),
                                             static_cast<unsigned long>(found.length(group))}
                                     : Range{notFound, 0});
  }
  return match;
}

const void* matchesIn(const Pattern& pattern, const void* string, const void* options,
                      const void* location, const void* length) {
  const auto text = unitsOf(string);
  if (options || location || reinterpret_cast<unsigned long>(length) != text.size()) std::abort();
  auto* const array = fakes::createdBy<__CFArray>("matchesInString:options:range:");
  fakes::autorelease(array);
  for (std::wsregex_iterator at(text.begin(), text.end(), pattern.expression), end;
       array && at != end; ++at)
    array->items.push_back(matchOf(*at));
  return array;
}

}  // namespace

namespace fakes {

const Object* patternClass() {
  return &theClass;
}

std::optional<Answer> patternsAnswer(const Object* receiver, const std::string& selector,
                                     const void* first, const void* second, const void* third,
                                     const void* fourth) {
  if (receiver == &theClass && selector == "regularExpressionWithPattern:options:error:")
    return Answer{compiled(first, second)};
  const auto* const pattern = dynamic_cast<const Pattern*>(receiver);
  if (pattern && selector == "matchesInString:options:range:")
    return Answer{matchesIn(*pattern, first, second, third, fourth)};
  const auto* const match = dynamic_cast<const Match*>(receiver);
  if (match && selector == "numberOfRanges")
    return Answer{reinterpret_cast<const void*>(match->ranges.size())};
  if (match && selector == "rangeAtIndex:") {
    const auto range = match->ranges.at(reinterpret_cast<unsigned long>(first));
    return Answer{reinterpret_cast<const void*>(range.location), range.length};
  }
  return std::nullopt;
}

}  // namespace fakes
