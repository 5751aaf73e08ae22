#include "vantile/platform/parsers/text.h"

#include "fuzz/fuzzer.h"

void vantile::fuzz::consume(std::string_view input) {
  const auto plain = withoutOctalEscapes(input);
  require(plain.size() <= input.size(), "nothing is made up");
  require(input.find('\\') != input.npos || plain == input, "without a backslash nothing changes");
  require(withoutOctalEscapes(asKernelWrites(input)) == input, "a name comes back as it was");

  std::string everyByte;
  for (const char byte : input) {
    const auto code = static_cast<unsigned char>(byte);
    everyByte.push_back('\\');
    for (const int shift : {6, 3, 0})
      everyByte.push_back(static_cast<char>('0' + (code >> shift) % 8));
  }
  require(withoutOctalEscapes(everyByte) == input, "every byte has an escape");

  require(withoutHexEscapes(input).size() <= input.size(), "nothing is made up of digits");
  require(input.find('\\') != input.npos || withoutHexEscapes(input) == input,
          "without a backslash nothing changes there either");
  std::string everyCode;
  for (const char byte : input) {
    const auto code = static_cast<unsigned char>(byte);
    everyCode.append("\\x").push_back("0123456789abcdef"[code / 16]);
    everyCode.push_back("0123456789ABCDEF"[code % 16]);
  }
  require(withoutHexEscapes(everyCode) == input, "every byte has a code");
}
