// System.cpp - see ../System.h.  The Linux implementation.
#include "engine/sfx/System.h"

#include <cerrno>

#include "engine/sfx/Console.h"
#include "engine/sfx/linux/SystemCalls.h"

namespace kozor::sfx::host {

bool WriteText(Stream stream, std::string_view text) {
  const int file = stream == Stream::Output ? 1 : 2;
  while (!text.empty()) {
    const long written = Write(file, text.data(), text.size());
    if (written == -EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

void Exit(int status) {
  for (;;) Call(SYS_exit_group, status);
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

std::string_view FileNameOf(std::string_view path) {
  return path.substr(path.rfind('/') + 1);
}

std::span<const std::uint8_t> OwnFile(std::string& problem) {
  const int file = OpenAt(AT_FDCWD, "/proc/self/exe", O_RDONLY);
  const long size = file < 0 ? file : SizeOf(file);
  const long address =
      size <= 0 ? size : Map(static_cast<std::uint64_t>(size), PROT_READ, MAP_PRIVATE, file);
  if (address <= 0) {
    problem = Join({Reason(address), " (is /proc mounted?)"});
    return {};
  }
  CloseFile(file);
  return {reinterpret_cast<const std::uint8_t*>(address), static_cast<std::size_t>(size)};
}

std::uint8_t* ReserveMemory(std::uint64_t bytes) {
  const long address =
      Map(bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1);
  return address < 0 ? nullptr : reinterpret_cast<std::uint8_t*>(address);
}

void DropMemory(std::uint8_t* begin, std::size_t bytes) {
  Drop(begin, bytes);
}

void FreeMemory(std::uint8_t* begin, std::uint64_t bytes) {
  UnmapBytes(begin, bytes);
}

}  // namespace kozor::sfx::host
