// File.h - the archiver's file handle: reads and writes by offset; the destructor closes it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/container/ByteSource.h"

namespace kozor::container {

// Identifies a state of a file: file identity, size, time of last write.
struct FileStamp {
  std::uint64_t identity = 0;  // of the file on its volume
  std::uint32_t volume = 0;
  std::uint64_t size = 0;
  std::uint64_t lastWrite = 0;  // 100 ns since 1601

  bool operator==(const FileStamp&) const = default;
  bool IsSameFile(const FileStamp& other) const {
    return identity == other.identity && volume == other.volume;
  }
};

struct FileFacts {
  FileStamp stamp;
  std::uint32_t attributes = 0;  // FILE_ATTRIBUTE_*
};

// Owner, group and permissions of a file.
struct UnixFacts {
  std::uint16_t mode = 0;  // file type included
  std::uint32_t user = 0;
  std::uint32_t group = 0;
};

class File {
 public:
  enum class Mode {
    Read,       // others may read, write and delete
    Update,     // read and write; others may only read
    CreateNew,  // as Update, marked as temporary; fails if the file exists
    Scratch,    // as CreateNew; private, and deleted when it is closed
    Alone,      // as Update, and fails if anybody else has the file open
    Facts,      // metadata only; opens directories too
  };

  File() = default;
  ~File() { Close(); }
  File(File&& other) noexcept;

  // Returns false with GetLastError on failure.
  bool Open(const std::string& path, Mode mode);
  void Close();
  // Replace this file, which is open for Update, by the file `replacement`, or remove it.  The file
  // is closed only after that, so nobody else can change it in between (on Windows: HostRules.h).
  // Return false with GetLastError on failure.
  bool ReplaceBy(const std::string& replacement, const std::string& ownPath);
  bool Remove(const std::string& ownPath);
  bool IsOpen() const { return handle != nullptr; }

  // These throw ResultCode::CannotRead.
  std::uint64_t Size() const;
  FileFacts Facts() const;
  // Empty if the host has none.
  std::optional<UnixFacts> FactsOfUnix() const;
  // The path with all links resolved.
  std::string FinalPath() const;
  // Returns the number of bytes read, less than asked for only at the end of the file.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> buffer);

  // These throw ResultCode::NoDiskSpace or ResultCode::CannotWrite.
  void WriteAt(std::uint64_t offset, ByteSpan bytes);
  void SetSize(std::uint64_t size);
  void Flush();  // returns after the data has reached the medium

 private:
  bool Seek(std::uint64_t offset);

  static constexpr std::uint64_t kUnknown = ~std::uint64_t{0};

  void* handle = nullptr;      // a HANDLE
  std::uint64_t position = 0;  // of the file pointer; kUnknown after a failure, which may move it
};

// The stamp of the file or directory at a path, without opening it; none if it doesn't exist.
std::optional<FileStamp> FindStamp(const std::string& path);

// A symbolic link itself.
struct Link {
  std::string target;  // the path in the link
  UnixFacts unixFacts;
  std::uint64_t lastWrite = 0;  // 100 ns since 1601
};
// Empty on failure; GetLastError has the reason.
std::optional<Link> ReadLink(const std::string& path);

// Reads a file through a buffer whose size adapts: large pieces for sequential reading, small ones
// when the reader skips packed data.
class BufferedFile : public ByteSource {
 public:
  explicit BufferedFile(File& opened) : file(opened), size(opened.Size()) {}

  std::uint64_t Size() const override { return size; }
  ByteSpan At(std::uint64_t offset, std::size_t bytes) override;

 private:
  void Fill(std::uint64_t offset, std::size_t bytes);

  File& file;
  const std::uint64_t size;
  std::vector<std::uint8_t> buffer;
  std::uint64_t begin = 0;  // of the buffer in the file
};

// Repeats a call that moves or deletes a file while it fails with a sharing violation, for about
// half a second at most: another run may hold the file briefly to check whether it is in use.
bool RepeatWhileShared(const std::function<bool()>& call);

// The code for a failed write, from GetLastError.
enum class ResultCode : std::int32_t;
ResultCode WriteFailureCode();

}  // namespace kozor::container
