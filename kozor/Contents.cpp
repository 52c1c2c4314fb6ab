// Contents.cpp - see Contents.h.
//
// The library's interface reports only files, and only some of their metadata.  So the headers are
// read here, with the archiver's own reader.
#include "Contents.h"

#include <algorithm>
#include <limits>
#include <string_view>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "VolumeReader.h"
#include "engine/container/ArchiveIndex.h"
#include "engine/container/Failure.h"
#include "engine/container/File.h"
#include "engine/container/FirstHeader.h"
#include "engine/container/MacBinary.h"
#include "engine/container/MemberName.h"
#include "engine/container/MemberWalker.h"
#include "engine/container/NamePages.h"
#include "engine/container/Text.h"
#include "platform/base/Clock.h"
#include "platform/text/Case.h"
#include "platform/win32/HostRules.h"

namespace kozor::program {

namespace {

constexpr unsigned int kUtf8 = 65001;

// The target of a link, or a comment.  Bytes that aren't valid in the recorded code page, or else
// in UTF-8, are read as code page 932.
std::string TextIn(std::string stored, unsigned int codePage) {
  container::NameFields fields = {.file = std::move(stored), .codePage = codePage};
  const unsigned int page = codePage != 0 ? codePage : KzNameCodePage();
  if (page != 0) container::ApplyPage(page, fields);
  std::u16string text;
  bool ignored = false;
  if (fields.unicodeFile) {
    text = *fields.unicodeFile;
    std::replace(text.begin(), text.end(), u'\xFFFF', u'/');
    return container::EncodeTextLossy(kUtf8, text, ignored);
  }
  std::string bytes = *fields.file;
  std::replace(bytes.begin(), bytes.end(), '\xFF', '/');
  const bool isShiftJis = fields.codePage == container::kShiftJis;
  if (!container::DecodeText(isShiftJis ? container::kShiftJis : container::kUtf8, bytes, text)) {
    text = container::DecodeTextLossy(container::kShiftJis, bytes, ignored);
  }
  return container::EncodeTextLossy(kUtf8, text, ignored);
}

Member Describe(const container::Member& known, const container::MemberHeader& header) {
  Member member;
  member.name = known.name;
  member.method.assign(known.method.begin(), known.method.end());
  member.level = header.level;
  member.size = known.originalBytes;
  member.packedBytes = known.packedBytes;
  member.crc = known.crc;
  member.lastWrite = known.lastWrite.Utc();
  member.attribute = static_cast<std::uint8_t>(known.attribute);
  member.unixMode = header.unixMode;
  member.capsuleOffset = header.capsule.offset;
  member.capsuleBytes = header.capsule.bytes;
  member.overclaims =
      known.unpacking &&
      known.originalBytes > codec::MostUnpackedBytes(*known.unpacking, known.packedBytes);
  if (header.IsLink()) {
    member.kind = MemberKind::Link;
    container::NameFields name = header.name;
    member.linkTarget = TextIn(container::TakeLinkTarget(name), name.codePage);
  } else if (header.IsDirectoryMethod()) {
    member.kind = MemberKind::Folder;
  }
  if (member.name.empty()) member.kind = MemberKind::Nameless;
  return member;
}

bool IsVolume(const std::filesystem::path& path) {
  try {
    const VolumeReader volume(path);
    return true;
  } catch (const Failure&) {
    return false;
  }
}

// A name for comparison with words: without leading separators and without a trailing one.
std::string_view Trimmed(std::string_view name) {
  name.remove_prefix(std::min(name.find_first_not_of('\\'), name.size()));
  if (name.ends_with('\\')) name.remove_suffix(1);
  return name;
}

bool IsOrLiesBelow(std::string_view name, std::string_view folder) {
  return name.starts_with(folder) && (name.size() == folder.size() || name[folder.size()] == '\\');
}

// One word of the command line.
class Choice {
 public:
  explicit Choice(const std::string& word) : hasWildcards(HasWildcards(word)), mask("") {
    std::string name = word;
    std::replace(name.begin(), name.end(), '/', '\\');
    if (name.starts_with(".\\")) name.erase(0, 2);
    mask = Mask(std::string(Trimmed(name)));
    folded = text::UpperKey(mask.Word());
  }

  bool Means(std::string_view member) const {
    const std::string_view name = Trimmed(member);
    return hasWildcards ? mask.MeansItself(name) : IsOrLiesBelow(name, mask.Word());
  }
  // The same, ignoring case, for names that no member has exactly.
  bool NearlyMeans(std::string_view member) const {
    const std::u16string name = text::UpperKey(Trimmed(member));
    return !hasWildcards && name.starts_with(folded) &&
           (name.size() == folded.size() || name[folded.size()] == u'\\');
  }

  // The same for the file name, in any folder.
  bool MeansFileName(std::string_view member) const {
    return !hasWildcards && mask.MeansItself(Trimmed(member));
  }

 private:
  const bool hasWildcards;
  Mask mask;
  std::u16string folded;
};

using Meaning = bool (Choice::*)(std::string_view) const;

// Tries several ways to match a word and marks the members of the first that finds any.  Returns
// whether there are any.
bool MarkMeant(const container::MemberTable& members, const std::string& word,
               std::initializer_list<Meaning> ways, std::vector<bool>& marked) {
  const Choice choice(word);
  bool isAny = false;
  for (const Meaning means : ways) {
    for (std::size_t i = 0; i < members.size(); ++i) {
      if (!(choice.*means)(members.NameAt(i))) continue;
      isAny = true;
      marked[i] = true;
    }
    if (isAny) break;
  }
  return isAny;
}

// Calls `read`, and gives the archiver's failures words.
template <typename Read>
void WithReasons(const std::string& archive, const std::string& name, Read read) {
  try {
    read();
  } catch (const container::Failure& failure) {
    // The library's numbers are the archiver's minus 0x8000.
    const auto error = static_cast<ZorError>(static_cast<int>(failure.code) - 0x8000);
    if (error == ZorErrorEngine8019 && IsVolume(HostPath(archive))) {
      throw Failure(Visible(name) + ": a volume of a backup set (kozor info shows it)");
    }
    throw Failure(Visible(name) + ": " + std::string(ErrorText(error)));
  }
}

}  // namespace

std::int64_t Member::Seconds() const {
  return UnixOfFileTime(lastWrite);
}

void RequireUnpackable(const Member& member) {
  if (member.size > std::numeric_limits<std::uint32_t>::max()) {
    throw FileFailure("members of 4 GiB or more can't be unpacked");
  }
  if (member.overclaims) {
    throw FileFailure("the member is damaged: its data is too short for the size it claims");
  }
}

struct ArchiveReader::Opened {
  explicit Opened(container::File& opened)
      : source(opened), index(source, kUtf8, KzNameCodePage()) {}

  // Of several members with one name the last counts.
  bool IsSuperseded(std::size_t position, const std::string& member) const {
    if (member.empty()) return false;
    return std::max(index.FindExactly(member), index.FindLink(member)) > position;
  }

  container::BufferedFile source;
  const container::ArchiveIndex index;
};

ArchiveReader::ArchiveReader(const std::string& archive, const std::string& shownName)
    : path(archive), name(shownName), file(std::make_unique<container::File>()) {
  const FileState state = Inspect(HostPath(archive));
  if (!Exists(HostPath(archive))) throw Failure(Visible(name) + ": no such archive");
  if (state.isDirectory) throw Failure(Visible(name) + ": a directory, not an archive");
  if (!state.problem.empty()) throw Failure(Visible(name) + ": " + state.problem);
  if (!file->Open(archive, container::File::Mode::Read)) {
    throw Failure(Visible(name) + ": the archive can't be read, or another program is changing it");
  }
  WithReasons(path, name, [&] { opened = std::make_unique<Opened>(*file); });
}

ArchiveReader::~ArchiveReader() = default;

std::size_t ArchiveReader::Count() const {
  return opened->index.Members().size();
}

Member ArchiveReader::At(std::size_t position) {
  Member member;
  WithReasons(path, name, [&] {
    const container::Member known = opened->index.Members()[position];
    container::MemberHeader header;
    container::ParseHeaderAt(opened->source, known.offset, header);
    member = Describe(known, header);
    const auto& [offset, bytes] = header.comment;
    if (bytes != 0) {
      const container::ByteSpan comment = opened->source.At(known.offset + offset, bytes);
      member.comment = TextIn({comment.begin(), comment.end()}, header.name.codePage);
    }
    member.damaged = opened->index.Damage() && known.fault;
  });
  return member;
}

std::string ArchiveReader::NameAt(std::size_t position) const {
  return opened->index.Members().NameAt(position);
}

std::optional<std::size_t> ArchiveReader::FindExactly(const std::string& member) const {
  return std::max(opened->index.FindExactly(member), opened->index.FindLink(member));
}

std::optional<std::size_t> ArchiveReader::FindReplacedBy(const std::string& member) const {
  if (const auto found = FindExactly(member)) return found;
  return KzCreatesExactly() ? std::nullopt : opened->index.Find(member);
}

std::vector<bool> ArchiveReader::Meant(const std::string& word) const {
  std::vector<bool> meant(Count());
  MarkMeant(opened->index.Members(), word, {&Choice::Means, &Choice::NearlyMeans}, meant);
  return meant;
}

std::vector<bool> ArchiveReader::Choose(const std::vector<std::string>& words,
                                        const MaskList& excludes) const {
  std::vector<bool> chosen(Count(), words.empty());
  for (const std::string& word : words) {
    const bool isMeant =
        MarkMeant(opened->index.Members(), word,
                  {&Choice::Means, &Choice::NearlyMeans, &Choice::MeansFileName}, chosen);
    if (!isMeant) Complain(Visible(word) + ": no such member in " + Visible(name));
  }
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (!chosen[i]) continue;
    const std::string member = NameAt(i);
    chosen[i] = !opened->IsSuperseded(i, member) && !excludes.Means(member);
  }
  return chosen;
}

std::vector<bool> ArchiveReader::FilesNamedAsFolders(const std::vector<bool>& chosen) const {
  const container::MemberTable& members = opened->index.Members();
  std::vector<bool> found(chosen.size());
  std::string before;
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (!chosen[i]) continue;
    const std::string member = NameAt(i);
    // Folders that the name before has, too, are known.
    const auto differs = std::mismatch(member.begin(), member.end(), before.begin(), before.end());
    auto end = static_cast<std::size_t>(differs.first - member.begin());
    while ((end = member.find('\\', end)) != member.npos) {
      const auto known = opened->index.FindExactly(std::string_view(member).substr(0, end++));
      if (known && members.KindAt(*known) == container::MemberKind::File) found[*known] = true;
    }
    before = member;
  }
  return found;
}

std::uint64_t ArchiveReader::TotalBytes(const std::vector<bool>& chosen) const {
  std::uint64_t bytes = 0;
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    if (chosen[i]) bytes += opened->index.Members()[i].originalBytes;
  }
  return bytes;
}

bool ArchiveReader::HasEndMark() const {
  return opened->index.HasEndMark();
}

std::size_t ArchiveReader::Damaged() const {
  if (!opened->index.Damage()) return 0;
  const container::MemberTable& members = opened->index.Members();
  return static_cast<std::size_t>(
      std::count_if(members.begin(), members.end(),
                    [](const container::Member& member) { return member.fault.has_value(); }));
}

std::span<unsigned char> Unwrapped(const Member& member, std::span<unsigned char> data) {
  if (member.capsuleBytes != 0) {
    const bool isInside = member.capsuleOffset <= data.size() &&
                          member.capsuleBytes <= data.size() - member.capsuleOffset;
    return isInside ? data.subspan(member.capsuleOffset, member.capsuleBytes) : data;
  }
  const std::string_view name = member.name;
  const auto fork = container::FindDataFork(data, name.substr(name.rfind('\\') + 1));
  return fork ? data.subspan(fork->offset, fork->bytes) : data;
}

void ChooseNamePage(const Arguments& arguments) {
  if (!arguments.Has("--name-page")) return;
  const int page = arguments.Number("--name-page", 1, 65535, 0);
  if (!ChooseNamePage(static_cast<unsigned int>(page))) {
    throw UsageError(
        "--name-page: unknown code page " + std::to_string(page) +
        " (known: 932, 65001, 437, 850, 852, 866, 936, 949, 950, 1250 to 1252, 10000, 28591, "
        "51932)");
  }
}

SourceArchive::SourceArchive(std::string givenName) : name(std::move(givenName)) {
  if (name == "-") {
    SaveStandardInput(CopyPath());
    path = LibraryPath(CopyPath());
  } else {
    path = LibraryPath(FromUtf8(name));
  }
  reader.emplace(path, name);
  const std::size_t damaged = reader->Damaged();
  if (damaged == 0) return;
  const std::size_t whole = reader->Count() - damaged;
  Complain(Visible(name) + ": the archive is damaged or cut short; " + std::to_string(whole) +
           (whole == 1 ? " member" : " members") + " can be read");
}

std::filesystem::path SourceArchive::CopyPath() {
  if (!copy) copy.emplace();
  return copy->Path() / "archive.lzh";
}

}  // namespace kozor::program
