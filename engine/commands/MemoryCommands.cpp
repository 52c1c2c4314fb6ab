// MemoryCommands.cpp - unpacks a member into memory and packs memory into a member.
#include <algorithm>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "engine/commands/ArchiveChange.h"
#include "engine/commands/Archiver.h"
#include "engine/commands/MemberPacker.h"
#include "engine/container/Failure.h"

namespace kozor::commands {
namespace {

using container::Failure;
using container::Member;
using container::ResultCode;

bool IsStored(codec::Method method) {
  return method == codec::Method::Lh0 || method == codec::Method::Lz4 ||
         method == codec::Method::Pm0;
}

std::int32_t UnixTimeOf(const Member& member) {
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(
      UnixOfFileTime(member.lastWrite.Utc()), 0, std::numeric_limits<std::int32_t>::max()));
}

// Extracts one member into a buffer, which may be smaller.
class Extraction {
 public:
  Extraction(container::File& opened, const Member& extracted, std::span<std::uint8_t> buffer,
             Progress& told)
      : file(opened), member(extracted), target(buffer), progress(told) {}

  // Keeps `written` at the number of bytes delivered, even if it throws.
  void Run(std::uint32_t& written) {
    const auto method = member.unpacking;
    if (!method) throw Failure(ResultCode::MethodNotSupported);
    const auto other = OtherSchemeOf(*method);
    const bool isWhole = target.size() == member.originalBytes;
    if (!other || !isWhole || !member.crc) return Deliver(*method, written);
    // If neither fits, the header decides.
    if (!Delivers(*method, written) && !Delivers(*other, written)) Deliver(*method, written);
  }

 private:
  // Two methods share the id of lh7, and the header has only weak signs of which one it is.
  static std::optional<codec::Method> OtherSchemeOf(codec::Method method) {
    if (method == codec::Method::Lh7) return codec::Method::Lk7;
    if (method == codec::Method::Lk7) return codec::Method::Lh7;
    return std::nullopt;
  }

  bool Delivers(codec::Method method, std::uint32_t& written) {
    try {
      Deliver(method, written);
    } catch (const Failure& thrown) {
      const bool isWrongScheme =
          thrown.code == ResultCode::PackedDataDamaged || thrown.code == ResultCode::CrcMismatch;
      if (!isWrongScheme) throw;
      return false;
    }
    return true;
  }

  void Deliver(codec::Method method, std::uint32_t& written) {
    written = 0;
    if (IsStored(method)) {
      ReadStored(written);
    } else if (!target.empty()) {
      Unpack(method, written);
    }
    if (target.size() < member.originalBytes) throw Failure(ResultCode::NotEnoughMemory);
    if (member.crc && codec::Crc16(target) != *member.crc) throw Failure(ResultCode::CrcMismatch);
  }

  void ReadStored(std::uint32_t& written) {
    const auto available =
        static_cast<std::size_t>(std::min<std::uint64_t>(target.size(), member.packedBytes));
    while (written < available) {
      const std::size_t wanted = std::min(available - written, kProgressStep);
      const auto piece = target.subspan(written, wanted);
      if (file.ReadAt(member.DataOffset() + written, piece) != wanted) {
        throw Failure(ResultCode::CannotRead);
      }
      written += static_cast<std::uint32_t>(wanted);
      progress.Report(written);
    }
    if (available < target.size()) throw Failure(ResultCode::PackedDataDamaged);
  }

  // Keeps failures from passing through the decoder, which then stops by itself and reports how far
  // it has come.
  template <typename Step>
  bool Try(Step step) {
    try {
      step();
    } catch (const Failure& thrown) {
      failure = thrown.code;
    }
    return !failure;
  }

  // Reads the packed data in pieces.
  void Unpack(codec::Method method, std::uint32_t& written) {
    std::uint64_t next = member.DataOffset();
    std::vector<std::uint8_t> piece;
    const auto readPiece = [&]() -> std::span<const std::uint8_t> {
      const std::uint64_t left = member.EndOffset() - next;
      piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(left, kProgressStep)));
      const bool isRead = Try([&] {
        if (file.ReadAt(next, piece) != piece.size()) throw Failure(ResultCode::CannotRead);
      });
      next += piece.size();
      return isRead ? std::span<const std::uint8_t>(piece) : std::span<const std::uint8_t>();
    };
    const auto report = [&](std::size_t bytes) {
      return Try([&] {
        if (bytes != 0) progress.Report(bytes);
      });
    };
    std::size_t done = 0;
    const codec::Status status = codec::DecodePieces(method, readPiece, target, report, &done);
    written = static_cast<std::uint32_t>(done);
    if (failure) throw Failure(*failure);
    if (status == codec::Status::Unsupported) throw Failure(ResultCode::MethodNotSupported);
    if (status != codec::Status::Ok) throw Failure(ResultCode::PackedDataDamaged);
  }

  container::File& file;
  const Member& member;
  const std::span<std::uint8_t> target;
  Progress& progress;
  std::optional<ResultCode> failure;
};

}  // namespace

void Archiver::ExtractToMemory(std::string_view text, std::span<std::uint8_t> buffer,
                               const ProgressListener& listener, ExtractedMember& result) {
  const CommandLine line = ParseMemoryCall(text);
  const std::string& name = line.operands.front().text;
  const auto [file, index] = indexes.OpenAgain(line.archive);
  const auto position = index->Find(name);
  if (!position || index->Members().KindAt(*position) != container::MemberKind::File) {
    throw Failure(ResultCode::NotFound);
  }
  const Member member = index->Members()[*position];
  if (member.fault) throw Failure(*member.fault);
  result.unixTime = UnixTimeOf(member);
  result.attribute = member.attribute;

  const auto target = buffer.first(
      static_cast<std::size_t>(std::min<std::uint64_t>(buffer.size(), member.originalBytes)));
  Progress progress(listener);
  progress.Begin(member.name, member.originalBytes);
  Extraction(*file, member, target, progress).Run(result.written);
  progress.End(member.originalBytes);
}

std::uint32_t Archiver::CompressFromMemory(std::string_view text, const MemoryMember& memory,
                                           const ProgressListener& listener) {
  const CommandLine line = ParseMemoryCall(text);
  const std::string& given = line.operands.front().text;
  ArchiveChange change(indexes, line);
  const unsigned int workingPage = change.Index().WorkingPage();
  const std::string name = container::StoredNameOf(given, workingPage);
  if (name.empty()) throw Failure(ResultCode::FileNotOpened);
  if (name.size() > container::kMaxShownBytes) throw Failure(ResultCode::NameTooLong);
  change.RemoveReplacedBy(name);

  container::NewMember member;
  member.name = container::EncodeName(name, workingPage);
  member.utcTime = memory.unixTime ? FileTimeOfUnix(static_cast<std::uint32_t>(*memory.unixTime))
                                   : container::CurrentFileTime();
  member.attribute = memory.attribute.value_or(member.attribute);

  Progress progress(listener);
  std::uint64_t packedBytes = 0;
  change.Apply([&](container::ArchiveUpdate& update) {
    MemberPacker packer(line.packing, update, progress, segmentPacker);
    packer.Add(std::move(member), std::make_unique<MemoryInput>(memory.data), memory.data.size(),
               [&] {
                 progress.Begin(name, memory.data.size());
                 update.CopyKept([&](std::uint64_t) { progress.Report(0); });
               });
    packer.Finish();
    packedBytes = packer.LastPackedBytes();
  });
  return static_cast<std::uint32_t>(packedBytes);
}

}  // namespace kozor::commands
