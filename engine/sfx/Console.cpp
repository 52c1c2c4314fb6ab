// Console.cpp - see Console.h.
#include "engine/sfx/Console.h"

#include <algorithm>
#include <cerrno>

#include "engine/sfx/linux/SystemCalls.h"
#include "platform/text/CodePage.h"

namespace kozor::sfx {
namespace {

constexpr std::size_t kBufferBytes = 8 << 10;

char buffer[kBufferBytes];
std::size_t buffered = 0;
bool isBroken = false;
std::string_view programName;

bool WriteWhole(int file, std::string_view text) {
  while (!text.empty()) {
    const long written = host::Write(file, text.data(), text.size());
    if (written == -EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace

void SetProgramName(std::string_view name) {
  programName = name;
}

void Say(std::initializer_list<std::string_view> pieces) {
  const std::string line = Join({Join(pieces), "\n"});
  if (line.size() > kBufferBytes - buffered) FlushOutput();
  if (line.size() > kBufferBytes) {
    if (!WriteWhole(host::kStandardOutput, line)) isBroken = true;
    return;
  }
  line.copy(buffer + buffered, line.size());
  buffered += line.size();
}

bool FlushOutput() {
  if (!WriteWhole(host::kStandardOutput, {buffer, buffered})) isBroken = true;
  buffered = 0;
  return !isBroken;
}

void Complain(std::initializer_list<std::string_view> pieces) {
  FlushOutput();
  WriteWhole(host::kStandardError, Join({Visible(programName), ": ", Join(pieces), "\n"}));
}

// Allocates nothing: memory may be exhausted.
void Die(std::string_view reason) {
  FlushOutput();
  for (const std::string_view piece :
       {std::string_view("fatal: "), reason, std::string_view("\n")}) {
    WriteWhole(host::kStandardError, piece);
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

std::string Reason(long error) {
  switch (-error) {
    case ENOENT:
      return "no such file or directory";
    case EACCES:
    case EPERM:
      return "permission denied";
    case EROFS:
      return "the file system is read-only";
    case ENOSPC:
    case EDQUOT:
      return "the disk is full";
    case EFBIG:
      return "too large for the file system";
    case ENOMEM:
      return "not enough memory";
    case ENAMETOOLONG:
      return "the name is too long";
    case ENOTDIR:
    case ELOOP:
      return "a file or a link is in the way";
    case EISDIR:
    case ENOTEMPTY:
      return "a directory is in the way";
    case EEXIST:
      return "exists already";
    default:
      return Join({"system error ", Decimal(static_cast<std::uint64_t>(-error))});
  }
}

}  // namespace kozor::sfx
