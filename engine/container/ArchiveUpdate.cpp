// ArchiveUpdate.cpp - see ArchiveUpdate.h.
#include "engine/container/ArchiveUpdate.h"

#include <algorithm>
#include <array>
#include <utility>

#include "engine/container/Failure.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MemberWalker.h"
#include "engine/container/Path.h"

namespace kozor::container {
namespace {

constexpr std::uint8_t kEndMark[1] = {0};

struct Range {
  std::uint64_t begin;
  std::uint64_t end;
};

// The bytes to keep, merged into few ranges: members have no gaps between them.
std::vector<Range> KeptRanges(const ArchiveIndex& index, const std::vector<bool>& removed) {
  std::vector<Range> ranges;
  if (index.PrefixBytes() != 0) ranges.push_back({0, index.PrefixBytes()});
  for (std::size_t position = 0; position < index.Members().size(); ++position) {
    if (removed[position]) continue;
    const Member member = index.Members()[position];
    if (!ranges.empty() && ranges.back().end == member.offset) {
      ranges.back().end = member.EndOffset();
    } else {
      ranges.push_back({member.offset, member.EndOffset()});
    }
  }
  return ranges;
}

// Whether an interrupted append of ours follows the last member: a header whose first byte is still
// the end mark.
bool IsUncommittedAppend(File& file, std::uint64_t endMark) {
  std::array<std::uint8_t, kCommonHeaderBytes> bytes{};
  if (file.ReadAt(endMark, bytes) != bytes.size()) return false;
  return bytes[2] == '-' && bytes[3] == 'l' && bytes[4] == 'h' && bytes[6] == '-' && bytes[20] == 2;
}

// The file as it will be when the byte kept back has been written.
class WithFirstByte : public ByteSource {
 public:
  WithFirstByte(ByteSource& file, std::uint64_t byteOffset, std::uint8_t byteValue)
      : source(file), offset(byteOffset), value(byteValue) {}

  std::uint64_t Size() const override { return source.Size(); }
  ByteSpan At(std::uint64_t from, std::size_t bytes) override {
    const ByteSpan found = source.At(from, bytes);
    if (offset < from || offset - from >= found.size()) return found;
    patched.assign(found.begin(), found.end());
    patched[static_cast<std::size_t>(offset - from)] = value;
    return patched;
  }

 private:
  ByteSource& source;
  const std::uint64_t offset;
  const std::uint8_t value;
  std::vector<std::uint8_t> patched;
};

// Reads the headers from `begin` on.  They must lead to the end mark as the last byte, and the
// first header must still be found at the same offset: a member may have a method that the search
// for the first header skips.
void CheckReadable(ByteSource& source, const ArchiveIndex& old, std::uint64_t begin) {
  const bool isFound = FindFirstHeader(source) == old.PrefixBytes();
  MemberWalker walker(source, begin);
  MemberHeader header;
  while (walker.Next(header)) {
  }
  const bool isWhole = walker.Status() == HeaderStatus::Complete && walker.HasEndMark() &&
                       walker.NextOffset() + 1 == source.Size();
  if (!isFound || !isWhole) throw Failure(ResultCode::CannotWrite);
}

class InPlaceAppend : public ArchiveUpdate {
 public:
  explicit InPlaceAppend(OpenArchive& changed)
      : archive(changed),
        endMark(changed.index->EndOffset()),
        output(changed.file, endMark, MemberOutput::FirstByte::KeptBack) {
    TemporaryArchive::RemoveLeftovers(FolderOf(changed.path));
  }

  ~InPlaceAppend() override {
    if (!isCommitted) TakeBack();
  }

  MemberOutput& Output() override { return output; }
  void CopyKept(const CopyProgress&) override {}

  void Commit() override {
    if (!output.IsEmpty()) {
      output.Write(kEndMark);
      output.Finish();
      BufferedFile written(archive.file);
      WithFirstByte committed(written, endMark, output.KeptByte());
      CheckReadable(committed, *archive.index, endMark);
      output.ReleaseFirstByte();
    }
    isCommitted = true;
  }

 private:
  // Restores the end mark first, and on the medium, so that nothing after it counts.
  void TakeBack() noexcept {
    try {
      archive.file.WriteAt(endMark, kEndMark);
      archive.file.Flush();
      archive.file.SetSize(endMark + 1);
    } catch (const std::exception&) {  // the bytes left over follow the end mark
    }
  }

  OpenArchive& archive;
  const std::uint64_t endMark;
  MemberOutput output;
  bool isCommitted = false;
};

class Rewrite : public ArchiveUpdate {
 public:
  Rewrite(OpenArchive& changed, const std::vector<bool>& removed, const std::string& workDirectory)
      : archive(changed),
        kept(changed.file.IsOpen() ? KeptRanges(*changed.index, removed) : std::vector<Range>()),
        temporary(workDirectory.empty() ? FolderOf(changed.path) : workDirectory),
        output(temporary.Contents(), 0, MemberOutput::FirstByte::Written) {}

  MemberOutput& Output() override { return output; }

  void CopyKept(const CopyProgress& progress) override {
    for (const Range& range : kept) {
      CopyBytes(
          archive.file, range.begin, range.end, [&](ByteSpan piece) { output.Write(piece); },
          progress);
    }
  }

  void Commit() override {
    output.Write(kEndMark);
    output.Finish();
    BufferedFile written(temporary.Contents());
    CheckReadable(written, *archive.index, archive.index->PrefixBytes());
    if (archive.file.IsOpen()) {
      temporary.Replace(archive.file, archive.path);
    } else {
      temporary.BecomeNew(archive.path);
    }
  }

 private:
  OpenArchive& archive;
  const std::vector<Range> kept;
  TemporaryArchive temporary;
  MemberOutput output;
};

}  // namespace

bool CanAppendInPlace(OpenArchive& archive) {
  if (!archive.file.IsOpen() || archive.index->Members().empty()) return false;
  if (!archive.index->HasEndMark()) return false;
  const std::uint64_t endMark = archive.index->EndOffset();
  return archive.file.Size() == endMark + 1 || IsUncommittedAppend(archive.file, endMark);
}

void RefuseCodeBehindArchive(OpenArchive& archive) {
  if (!archive.file.IsOpen() || archive.index->PrefixBytes() == 0) return;
  const std::uint64_t end = archive.index->EndOffset() + (archive.index->HasEndMark() ? 1 : 0);
  if (archive.file.Size() == end || CanAppendInPlace(archive)) return;
  throw Failure(ResultCode::UnknownKind);
}

std::unique_ptr<ArchiveUpdate> AppendInPlace(OpenArchive& archive) {
  return std::make_unique<InPlaceAppend>(archive);
}

std::unique_ptr<ArchiveUpdate> RewriteArchive(OpenArchive& archive,
                                              const std::vector<bool>& removed,
                                              const std::string& workDirectory) {
  return std::make_unique<Rewrite>(archive, removed, workDirectory);
}

std::uint64_t KeptBytes(const ArchiveIndex& index, const std::vector<bool>& removed) {
  std::uint64_t bytes = 0;
  for (const Range& range : KeptRanges(index, removed)) bytes += range.end - range.begin;
  return bytes;
}

}  // namespace kozor::container
