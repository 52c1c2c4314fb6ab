// File.h - a file of the host for the archiver: opened, read and written by offset, closed with its
// object.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "engine/container/ByteSource.h"

namespace kozor::container {

// What tells one state of one file from all others: which file it is, how long, when written.
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

class File {
 public:
  enum class Mode {
    Read,       // others may do with the file what they like meanwhile
    Update,     // read and write; others may read meanwhile, but not write
    CreateNew,  // as Update, marked as temporary, and fails where a file is already
    Alone,      // as Update, and nobody else has the file open
    Facts,      // neither read nor written; opens directories, too
  };

  File() = default;
  ~File() { Close(); }
  File(File&& other) noexcept;
  File& operator=(File&& other) noexcept;

  // False on failure; GetLastError tells why.
  bool Open(const std::string& path, Mode mode);
  void Close();
  // Give the name of this file, which is open for Update, to the file `replacement`, or remove it.
  // Nobody else can change this file in between: it is closed after that.  False on failure;
  // GetLastError tells why.
  bool ReplaceBy(const std::string& replacement, const std::string& ownPath);
  bool Remove(const std::string& ownPath);
  bool IsOpen() const { return handle != nullptr; }

  // These throw ResultCode::CannotRead.
  std::uint64_t Size() const;
  FileFacts Facts() const;
  // The path without links on the way.
  std::string FinalPath() const;
  // Returns how many bytes were read: fewer than asked for only at the end of the file.
  std::size_t ReadAt(std::uint64_t offset, std::span<std::uint8_t> buffer);

  // These throw ResultCode::NoDiskSpace or ResultCode::CannotWrite.
  void WriteAt(std::uint64_t offset, ByteSpan bytes);
  void SetSize(std::uint64_t size);
  void Flush();  // returns when the data is on the medium

 private:
  bool Seek(std::uint64_t offset);

  void* handle = nullptr;      // a HANDLE
  std::uint64_t position = 0;  // of the file pointer
};

// Of the file or directory that a path names, without opening it; none when there is none.
std::optional<FileStamp> FindStamp(const std::string& path);

// Reads a file through a buffer that follows the reader: large pieces while it moves on in small
// steps, small ones where it leaps over packed data.
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

// Repeats a call that moves or deletes a file while it fails with a sharing violation, for half a
// second at most: another run that tries whether it can have the file holds it for a moment.
bool RepeatWhileShared(const std::function<bool()>& call);

// The code for a call that could not write, by GetLastError.
enum class ResultCode : std::int32_t;
ResultCode WriteFailureCode();

}  // namespace kozor::container
