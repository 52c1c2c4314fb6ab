// Contents.cpp - see Contents.h.
//
// The library's interface reports only files, and only some of their metadata.  So the headers are
// read here, with the archiver's own reader.
#include "Contents.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <unordered_map>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "VolumeReader.h"
#include "engine/container/ArchiveIndex.h"
#include "engine/container/Failure.h"
#include "engine/container/File.h"
#include "engine/container/FirstHeader.h"
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

// The target of a link.  A path that isn't valid in the recorded code page, or else in UTF-8, is
// read as code page 932.
std::string LinkTargetIn(container::NameFields fields) {
  container::NameFields target = {.file = container::TakeLinkTarget(fields),
                                  .codePage = fields.codePage};
  const unsigned int page = target.codePage != 0 ? target.codePage : KzNameCodePage();
  if (page != 0) container::ApplyPage(page, target);
  std::u16string text;
  bool ignored = false;
  if (target.unicodeFile) {
    text = *target.unicodeFile;
    std::replace(text.begin(), text.end(), u'\xFFFF', u'/');
    return container::EncodeTextLossy(kUtf8, text, ignored);
  }
  std::string bytes = *target.file;
  std::replace(bytes.begin(), bytes.end(), '\xFF', '/');
  const bool isShiftJis = target.codePage == container::kShiftJis;
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
  member.overclaims =
      known.unpacking &&
      known.originalBytes > codec::MostUnpackedBytes(*known.unpacking, known.packedBytes);
  if (header.IsLink()) {
    member.kind = MemberKind::Link;
    member.linkTarget = LinkTargetIn(header.name);
  } else if (header.IsDirectoryMethod()) {
    member.kind = MemberKind::Folder;
  }
  if (member.name.empty()) member.kind = MemberKind::Nameless;
  return member;
}

// Of several members with one name the last counts.
void MarkSuperseded(std::vector<Member>& members) {
  std::unordered_map<std::string_view, Member*> latest;
  for (Member& member : members) {
    Member*& earlier = latest[member.name];
    if (earlier != nullptr && member.kind != MemberKind::Nameless) earlier->superseded = true;
    earlier = &member;
  }
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

  bool Means(const Member& member) const {
    const std::string_view name = Trimmed(member.name);
    return hasWildcards ? mask.MeansItself(name) : IsOrLiesBelow(name, mask.Word());
  }
  // The same, ignoring case, for names that no member has exactly.
  bool NearlyMeans(const Member& member) const {
    const std::u16string name = text::UpperKey(Trimmed(member.name));
    return !hasWildcards && name.starts_with(folded) &&
           (name.size() == folded.size() || name[folded.size()] == u'\\');
  }

  // The same for the file name, in any folder.
  bool MeansFileName(const Member& member) const {
    return !hasWildcards && mask.MeansItself(Trimmed(member.name));
  }

 private:
  const bool hasWildcards;
  Mask mask;
  std::u16string folded;
};

using Meaning = bool (Choice::*)(const Member&) const;

// Tries several ways to match a word and returns the members of the first that finds any.
std::vector<const Member*> FindMeant(const std::vector<Member>& members, const std::string& word,
                                     std::initializer_list<Meaning> ways) {
  const Choice choice(word);
  std::vector<const Member*> meant;
  for (const Meaning means : ways) {
    for (const Member& member : members) {
      if ((choice.*means)(member)) meant.push_back(&member);
    }
    if (!meant.empty()) break;
  }
  return meant;
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

std::vector<Member> ReadMembers(const std::string& archive, const std::string& name,
                                bool* hasEndMark) {
  const FileState state = Inspect(HostPath(archive));
  if (!Exists(HostPath(archive))) throw Failure(Visible(name) + ": no such archive");
  if (state.isDirectory) throw Failure(Visible(name) + ": a directory, not an archive");
  if (!state.problem.empty()) throw Failure(Visible(name) + ": " + state.problem);
  container::File file;
  if (!file.Open(archive, container::File::Mode::Read)) {
    throw Failure(Visible(name) + ": the archive can't be read, or another program is changing it");
  }
  try {
    container::BufferedFile source(file);
    const container::ArchiveIndex index(source, kUtf8, KzNameCodePage());
    std::vector<Member> members;
    members.reserve(index.Members().size());
    for (const container::Member& known : index.Members()) {
      container::MemberHeader header;
      container::ParseHeaderAt(source, known.offset, header);
      members.push_back(Describe(known, header));
      members.back().damaged = index.Damage() && known.fault;
    }
    MarkSuperseded(members);
    if (hasEndMark != nullptr) *hasEndMark = index.HasEndMark();
    return members;
  } catch (const container::Failure& failure) {
    // The library's numbers are the archiver's minus 0x8000.
    const auto error = static_cast<ZorError>(static_cast<int>(failure.code) - 0x8000);
    if (error == ZorErrorEngine8019 && IsVolume(HostPath(archive))) {
      throw Failure(Visible(name) + ": a volume of a backup set (kozor info shows it)");
    }
    throw Failure(Visible(name) + ": " + std::string(ErrorText(error)));
  }
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
  members = ReadMembers(path, name, &hasEndMark);
  const auto damaged = std::count_if(members.begin(), members.end(),
                                     [](const Member& member) { return member.damaged; });
  if (damaged == 0) return;
  const std::size_t whole = members.size() - static_cast<std::size_t>(damaged);
  Complain(Visible(name) + ": the archive is damaged or cut short; " + std::to_string(whole) +
           (whole == 1 ? " member" : " members") + " can be read");
}

std::filesystem::path SourceArchive::CopyPath() {
  if (!copy) copy.emplace();
  return copy->Path() / "archive.lzh";
}

std::vector<const Member*> Meant(const std::vector<Member>& members, const std::string& word) {
  return FindMeant(members, word, {&Choice::Means, &Choice::NearlyMeans});
}

std::vector<const Member*> Choose(const std::vector<Member>& members,
                                  const std::vector<std::string>& words, const MaskList& excludes,
                                  const std::string& archiveName) {
  std::vector<bool> chosen(members.size(), words.empty());
  for (const std::string& word : words) {
    const std::vector<const Member*> meant =
        FindMeant(members, word, {&Choice::Means, &Choice::NearlyMeans, &Choice::MeansFileName});
    if (meant.empty()) Complain(Visible(word) + ": no such member in " + Visible(archiveName));
    for (const Member* member : meant) {
      chosen[static_cast<std::size_t>(member - members.data())] = true;
    }
  }
  std::vector<const Member*> result;
  for (std::size_t i = 0; i < members.size(); ++i) {
    if (chosen[i] && !members[i].superseded && !excludes.Means(members[i].name)) {
      result.push_back(&members[i]);
    }
  }
  return result;
}

std::uint64_t TotalBytes(const std::vector<const Member*>& members) {
  std::uint64_t bytes = 0;
  for (const Member* member : members) bytes += member->size;
  return bytes;
}

}  // namespace kozor::program
