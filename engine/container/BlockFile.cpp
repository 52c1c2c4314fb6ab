// BlockFile.cpp - see BlockFile.h.
#include "engine/container/BlockFile.h"

#include <array>
#include <string>

#include "engine/container/Failure.h"
#include "platform/win32/Win32.h"

namespace kozor::container {

std::optional<std::uint32_t> BlockFile::Store(std::span<const std::uint8_t> block) noexcept {
  const std::scoped_lock lock(mutex);
  try {
    if (!isUsable || (count == 0 && !Create())) return std::nullopt;
    file.WriteAt(std::uint64_t{count} * kBlockBytes, block);
    return count++;
  } catch (const std::exception&) {
    isUsable = false;
    return std::nullopt;
  }
}

bool BlockFile::Create() {
  constexpr std::uint64_t kAttempts = 100;
  std::array<char, MAX_PATH> directory{};
  const DWORD length = GetTempPathA(static_cast<DWORD>(directory.size()), directory.data());
  isUsable = false;
  if (length == 0 || length >= directory.size()) return false;
  const auto start = static_cast<std::uint64_t>(GetTickCount64());
  for (std::uint64_t attempt = 0; attempt < kAttempts; ++attempt) {
    const std::string path =
        directory.data() + ("kozor-" + std::to_string(start + attempt)) + ".tmp";
    if (file.Open(path, File::Mode::Scratch)) {
      isUsable = true;
      return true;
    }
    const DWORD error = GetLastError();
    if (error != ERROR_FILE_EXISTS && error != ERROR_ALREADY_EXISTS) break;
  }
  return false;
}

BlockFile::Pinned BlockFile::Pin(std::uint32_t number, std::size_t bytes) {
  Pinned pinned;
  pinned.lock = std::unique_lock(mutex);
  Cached& cached = cache[number % cache.size()];
  if (cached.number != number) {
    cached.number.reset();
    cached.bytes.resize(bytes);
    if (file.ReadAt(std::uint64_t{number} * kBlockBytes, cached.bytes) != bytes) {
      throw Failure(ResultCode::CannotRead);
    }
    cached.number = number;
  }
  pinned.bytes = cached.bytes;
  return pinned;
}

}  // namespace kozor::container
