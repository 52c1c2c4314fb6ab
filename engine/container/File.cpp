// File.cpp - see File.h.
#include "engine/container/File.h"

#include <algorithm>
#include <chrono>
#include <thread>
#include <utility>

#include "engine/container/Failure.h"
#include "platform/base/Clock.h"
#include "platform/win32/HostRules.h"
#include "platform/win32/Win32.h"

namespace kozor::container {
namespace {

constexpr std::size_t kMaxTransfer = 1 << 30;  // of one call
constexpr std::size_t kNearPiece = 64 << 10;
constexpr std::size_t kFarPiece = 4 << 10;
constexpr std::uint64_t kNearStep = 16 << 10;

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

struct OpenArguments {
  DWORD access;
  DWORD share;
  DWORD disposition;
  DWORD flags = FILE_ATTRIBUTE_NORMAL;
};

OpenArguments ArgumentsOf(File::Mode mode) {
  switch (mode) {
    case File::Mode::Read:
      return {GENERIC_READ, kShareAll, OPEN_EXISTING};
    case File::Mode::Facts:
      return {0, kShareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS};
    case File::Mode::Update:
      return {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, OPEN_EXISTING};
    case File::Mode::Alone:
      return {GENERIC_READ | GENERIC_WRITE, 0, OPEN_EXISTING};
    case File::Mode::Scratch:
      return {GENERIC_READ | GENERIC_WRITE, 0, CREATE_NEW,
              FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE};
    case File::Mode::CreateNew:
      break;
  }
  return {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, CREATE_NEW, FILE_ATTRIBUTE_TEMPORARY};
}

FileStamp StampOf(const BY_HANDLE_FILE_INFORMATION& information) {
  return {.identity = JoinHalves(information.nFileIndexHigh, information.nFileIndexLow),
          .volume = information.dwVolumeSerialNumber,
          .size = JoinHalves(information.nFileSizeHigh, information.nFileSizeLow),
          .lastWrite = Ticks(information.ftLastWriteTime)};
}

UnixFacts ToUnixFacts(const KzUnixFacts& facts) {
  return {static_cast<std::uint16_t>(facts.mode), facts.user, facts.group};
}

}  // namespace

ResultCode WriteFailureCode() {
  const DWORD error = GetLastError();
  const bool isFull = error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL;
  return isFull ? ResultCode::NoDiskSpace : ResultCode::CannotWrite;
}

bool RepeatWhileShared(const std::function<bool()>& call) {
  constexpr int kAttempts = 500;
  for (int i = 0; i < kAttempts; ++i) {
    if (i != 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (call()) return true;
    if (GetLastError() != ERROR_SHARING_VIOLATION) return false;
  }
  return false;
}

File::File(File&& other) noexcept
    : handle(std::exchange(other.handle, nullptr)), position(other.position) {}

bool File::Open(const std::string& path, Mode mode) {
  Close();
  const OpenArguments arguments = ArgumentsOf(mode);
  HANDLE opened = CreateFileA(path.c_str(), arguments.access, arguments.share, nullptr,
                              arguments.disposition, arguments.flags, nullptr);
  if (opened == INVALID_HANDLE_VALUE) return false;
  handle = opened;
  position = 0;
  return true;
}

void File::Close() {
  if (handle != nullptr) CloseHandle(std::exchange(handle, nullptr));
}

bool File::ReplaceBy(const std::string& replacement, const std::string& ownPath) {
  // On Windows a first attempt may already have closed the file.
  constexpr DWORD kFlags = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  if (!IsOpen()) return MoveFileExA(replacement.c_str(), ownPath.c_str(), kFlags) != 0;
  return KzReplaceHeld(replacement.c_str(), ownPath.c_str(), &handle) != 0;
}

bool File::Remove(const std::string& ownPath) {
  return KzDeleteHeld(ownPath.c_str(), &handle) != 0;
}

std::uint64_t File::Size() const {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(handle, &size)) throw Failure(ResultCode::CannotRead);
  return static_cast<std::uint64_t>(size.QuadPart);
}

FileFacts File::Facts() const {
  BY_HANDLE_FILE_INFORMATION information;
  if (!GetFileInformationByHandle(handle, &information)) throw Failure(ResultCode::CannotRead);
  return {.stamp = StampOf(information), .attributes = information.dwFileAttributes};
}

std::optional<UnixFacts> File::FactsOfUnix() const {
  KzUnixFacts facts;
  if (KzGetUnixFacts(handle, &facts)) return ToUnixFacts(facts);
  if (GetLastError() != ERROR_NOT_SUPPORTED) throw Failure(ResultCode::CannotRead);
  return std::nullopt;
}

std::optional<Link> ReadLink(const std::string& path) {
  Link link;
  KzUnixFacts facts;
  FILETIME lastWrite;
  if (!KzReadLink(path.c_str(), &facts, &lastWrite, link.target)) return std::nullopt;
  link.unixFacts = ToUnixFacts(facts);
  link.lastWrite = Ticks(lastWrite);
  return link;
}

std::optional<FileStamp> FindStamp(const std::string& path) {
  BY_HANDLE_FILE_INFORMATION information;
  if (!KzLookAtFile(path.c_str(), &information)) return std::nullopt;
  return StampOf(information);
}

std::string File::FinalPath() const {
  std::string path(MAX_PATH, '\0');
  for (;;) {
    const auto room = static_cast<DWORD>(path.size());
    const DWORD length = GetFinalPathNameByHandleA(handle, path.data(), room, 0);
    if (length == 0) throw Failure(ResultCode::CannotRead);
    path.resize(length);
    if (length < room) return path;
  }
}

bool File::Seek(std::uint64_t offset) {
  if (offset == position) return true;
  LARGE_INTEGER distance;
  distance.QuadPart = static_cast<LONGLONG>(offset);
  position = kUnknown;
  if (!SetFilePointerEx(handle, distance, nullptr, FILE_BEGIN)) return false;
  position = offset;
  return true;
}

std::size_t File::ReadAt(std::uint64_t offset, std::span<std::uint8_t> buffer) {
  if (!Seek(offset)) throw Failure(ResultCode::CannotRead);
  std::size_t done = 0;
  while (done < buffer.size()) {
    const auto wanted = static_cast<DWORD>(std::min(buffer.size() - done, kMaxTransfer));
    DWORD read = 0;
    if (!ReadFile(handle, buffer.data() + done, wanted, &read, nullptr)) {
      position = kUnknown;
      throw Failure(ResultCode::CannotRead);
    }
    done += read;
    position += read;
    if (read < wanted) break;
  }
  return done;
}

void File::WriteAt(std::uint64_t offset, ByteSpan bytes) {
  if (!Seek(offset)) throw Failure(WriteFailureCode());
  while (!bytes.empty()) {
    const auto wanted = static_cast<DWORD>(std::min(bytes.size(), kMaxTransfer));
    DWORD written = 0;
    const bool done = WriteFile(handle, bytes.data(), wanted, &written, nullptr) != 0;
    position += written;
    if (!done || written != wanted) {
      position = kUnknown;
      throw Failure(WriteFailureCode());
    }
    bytes = bytes.subspan(written);
  }
}

void File::SetSize(std::uint64_t size) {
  if (!Seek(size) || !SetEndOfFile(handle)) throw Failure(WriteFailureCode());
}

void File::Flush() {
  if (!FlushFileBuffers(handle)) throw Failure(WriteFailureCode());
}

ByteSpan BufferedFile::At(std::uint64_t offset, std::size_t bytes) {
  if (offset >= size) return {};
  bytes = static_cast<std::size_t>(std::min<std::uint64_t>(bytes, size - offset));
  const bool isInside = offset >= begin && offset + bytes <= begin + buffer.size();
  if (!isInside) Fill(offset, bytes);
  const ByteSpan rest = ByteSpan(buffer).subspan(static_cast<std::size_t>(offset - begin));
  return rest.first(std::min(rest.size(), bytes));  // shorter if the file has shrunk
}

void BufferedFile::Fill(std::uint64_t offset, std::size_t bytes) {
  const std::uint64_t end = begin + buffer.size();
  const bool isNear = offset >= begin && offset <= end + kNearStep;
  const std::size_t piece = std::max(bytes, isNear ? kNearPiece : kFarPiece);
  buffer.resize(static_cast<std::size_t>(std::min<std::uint64_t>(piece, size - offset)));
  begin = offset;
  buffer.resize(file.ReadAt(offset, buffer));
}

}  // namespace kozor::container
