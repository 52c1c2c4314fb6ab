// Console.cpp - see Console.h.
#include "engine/sfx/Console.h"

#include <algorithm>

#include "engine/sfx/System.h"
#include "platform/text/CodePage.h"

namespace kozor::sfx {
namespace {

constexpr std::size_t kBufferBytes = 8 << 10;

char buffer[kBufferBytes];
std::size_t buffered = 0;
bool isBroken = false;
std::string_view programName;

}  // namespace

void SetProgramName(std::string_view name) {
  programName = name;
}

void Say(std::initializer_list<std::string_view> pieces) {
  const std::string line = Join({Join(pieces), "\n"});
  if (line.size() > kBufferBytes - buffered) FlushOutput();
  if (line.size() > kBufferBytes) {
    if (!host::WriteText(host::Stream::Output, line)) isBroken = true;
    return;
  }
  line.copy(buffer + buffered, line.size());
  buffered += line.size();
}

bool FlushOutput() {
  if (!host::WriteText(host::Stream::Output, {buffer, buffered})) isBroken = true;
  buffered = 0;
  return !isBroken;
}

void Complain(std::initializer_list<std::string_view> pieces) {
  FlushOutput();
  host::WriteText(host::Stream::Errors, Join({Visible(programName), ": ", Join(pieces), "\n"}));
}

// Allocates nothing: memory may be exhausted.
void Die(std::string_view reason) {
  FlushOutput();
  for (const std::string_view piece :
       {std::string_view("fatal: "), reason, std::string_view("\n")}) {
    host::WriteText(host::Stream::Errors, piece);
  }
  host::Exit(1);
}

std::string Visible(std::string_view text) {
  std::string visible;
  while (!text.empty()) {
    const text::Decoded next = text::DecodeUtf8(text);
    if (text::IsShowable(next.character)) {
      visible += text.substr(0, next.bytes);
    } else {
      visible += '?';
    }
    text.remove_prefix(next.bytes);
  }
  return visible;
}

std::string Join(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

std::string Decimal(std::uint64_t number, std::size_t width, char fill) {
  constexpr std::size_t kMaxDigits = 20;
  std::string digits(kMaxDigits, fill);
  std::size_t begin = kMaxDigits;
  do {
    digits[--begin] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number != 0);
  return digits.substr(std::min(begin, kMaxDigits - width));
}

}  // namespace kozor::sfx
