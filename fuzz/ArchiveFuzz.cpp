// ArchiveFuzz.cpp - any bytes as an archive, met through the entry points of the loaded module and
// through the library: what is listed can be extracted or gets a code, what is listed before a
// member is added or deleted is listed after it with the same bytes, what is extracted to files is
// what is extracted to memory, and nothing is written outside of the destination.
//
// Input: mode of the search (bit 0) and how to change the archive (bits 1 and 2; 1 byte), search
// text (to a zero), archive.
#include <algorithm>
#include <compare>
#include <cstring>
#include <map>

#include "ZorArchive.h"
#include "fuzz/Fuzz.h"
#include "tests/engine/Engine.h"
#include "tests/support/TestFolder.h"

namespace kozor::fuzz {
namespace {

constexpr std::size_t kMostMembers = 50;

struct Contents {
  int code = 0;
  std::string bytes;
  auto operator<=>(const Contents&) const = default;
};

const test::TestFolder& Folder() {
  static const test::TestFolder folder;
  return folder;
}
const test::Engine& Archiver() {
  static const test::Engine engine;
  return engine;
}
const std::string& Archive() {
  static const std::string path = Folder().Lib("x.lzh");
  return path;
}

constexpr std::uint32_t kBelow = 0x801202;
constexpr std::uint32_t kHere = 0x801102;

// A handle to the archive.  Extraction is quicker while there is one.
class Opened {
 public:
  explicit Opened(std::uint32_t mode)
      : handle(Archiver().OpenArchive(nullptr, Archive().c_str(), mode)) {}
  ~Opened() {
    if (handle != nullptr) Archiver().CloseArchive(handle);
  }
  Opened(const Opened&) = delete;
  Opened& operator=(const Opened&) = delete;

  std::vector<UnlhaMemberRecord> Search(const std::string& text) const;

 private:
  const HARC handle;
};

std::vector<UnlhaMemberRecord> Opened::Search(const std::string& text) const {
  std::vector<UnlhaMemberRecord> found;
  if (handle == nullptr) return found;
  UnlhaMemberRecord record;
  for (int code = Archiver().FindFirst(handle, text.c_str(), &record); code == 0;
       code = Archiver().FindNext(handle, &record)) {
    Require(std::memchr(record.name, 0, sizeof record.name) != nullptr);
    Archiver().GetAttribute(handle);
    found.push_back(record);
  }
  return found;
}

Contents Extract(const std::string& name, std::size_t most) {
  Contents contents;
  contents.bytes.resize(most);
  std::uint32_t written = 0;
  const std::string line = "\"" + Archive() + "\" \"" + name + "\"";
  contents.code = Archiver().ExtractMem(
      nullptr, line.c_str(), reinterpret_cast<std::uint8_t*>(contents.bytes.data()),
      static_cast<std::uint32_t>(most), nullptr, nullptr, &written);
  Require(written <= most);
  contents.bytes.resize(written);
  return contents;
}

// The members that can be named on a command line, with their contents.
std::map<std::string, Contents> ExtractAll() {
  constexpr std::size_t kMostBytes = 1 << 16;
  std::map<std::string, Contents> members;
  const Opened archive(kBelow);
  for (const UnlhaMemberRecord& record : archive.Search("*.*")) {
    const std::string name = record.name;
    if (name.find('"') != std::string::npos || members.size() > kMostMembers) continue;
    members[name] = Extract(name, std::min<std::size_t>(record.size, kMostBytes));
  }
  return members;
}

// The sorted contents of members.
std::vector<Contents> Sorted(const std::map<std::string, Contents>& members) {
  std::vector<Contents> contents;
  for (const auto& member : members) contents.push_back(member.second);
  std::ranges::sort(contents);
  return contents;
}

// Deletes every other listed member.  The rest stays, though names that are distinguished by their
// position in the archive change.
void DeleteSome(std::map<std::string, Contents>& members) {
  std::string line = "d -w0 \"" + Archive() + "\"";
  std::map<std::string, Contents> kept;
  for (auto member = members.begin(); member != members.end(); ++member) {
    kept.insert(*member);
    if (++member == members.end()) break;
    line += " \"" + member->first + "\"";
  }
  if (kept.size() == members.size() || members.size() > kMostMembers) return;
  if (Archiver().Command(nullptr, line.c_str(), nullptr, 0) != 0) return;
  members = ExtractAll();
  Require(Sorted(members) == Sorted(kept));
}

// Absolute names lose their root.
class Extractor : public ZorArchive {
 public:
  std::vector<std::pair<std::string, std::string>> targets;  // member, path
  std::size_t done = 0;

 protected:
  int OnAbort(const ONABORTPARAM& param) override {
    if (param.phase == PhaseFileEnd) ++done;
    return 0;
  }
  CString OnMakeFileName(const char* directory, const char* name) override {
    CString target = ZorArchive::OnMakeFileName(directory, name + std::strspn(name, "\\"));
    targets.emplace_back(name, static_cast<const char*>(target));
    return target;
  }
};

void ExtractToFiles(const std::map<std::string, Contents>& members) {
  std::filesystem::create_directory(Folder().Path("target"));
  Extractor extractor;
  extractor.Extract(Archive().c_str(), Folder().Lib("target\\").c_str(), nullptr);
  std::map<std::string, std::string> last;  // the member that came to a path last
  for (std::size_t i = 0; i < extractor.targets.size(); ++i) {
    const auto& [name, path] = extractor.targets[i];
    last[path] = i < extractor.done ? name : "";
  }
  for (const auto& [path, name] : last) {
    const auto member = members.find(name);
    if (name.empty() || member == members.end() || member->second.code != 0) continue;
    CFile file;
    Require(file.Open(path.c_str(), CFile::modeRead) != 0);
    std::string bytes(static_cast<std::size_t>(file.GetLength()), 0);
    Require(file.Read(bytes.data(), static_cast<unsigned>(bytes.size())) == bytes.size());
    Require(bytes == member->second.bytes);
  }
  std::filesystem::remove_all(Folder().Path("target"));
}

}  // namespace

void TestInput(Input input) {
  constexpr char kAdded[] = "kozor fuzz.new";
  const unsigned mode = input.Byte();
  const std::string text = input.Text();
  Folder().WriteFile("x.lzh", input.Rest());
  // An archive written just now may change again within one clock tick, so it can't be cached.
  static std::int64_t time = 1'000'000'000;
  Folder().SetTime("x.lzh", ++time);
  Opened(mode % 2 == 0 ? kBelow : kHere).Search(text);

  std::map<std::string, Contents> before = ExtractAll();
  if (mode % 8 < 2) ExtractToFiles(before);
  if (mode % 8 >= 6) DeleteSome(before);
  const std::string name = "\"" + Archive() + "\" \"" + kAdded + "\"";
  const std::uint8_t data[] = {'n', 'e', 'w'};
  const int added = Archiver().CompressMem(nullptr, ("-z1 -w0 " + name).c_str(), data, sizeof data,
                                           nullptr, nullptr, nullptr);
  std::map<std::string, Contents> after = ExtractAll();
  if (added == 0) {
    Require(Archiver().CheckArchive(Archive().c_str(), 0) != 0);
    Require(Extract(kAdded, sizeof data).code == 0);
    after.erase(kAdded);
    before.erase(kAdded);
    Require(after == before);
    const int deleted = Archiver().Command(nullptr, ("d -w0 " + name).c_str(), nullptr, 0);
    after = ExtractAll();
    Require(after.erase(kAdded) == (deleted == 0 ? 0 : 1));
  }
  Require(after == before);
  for (const std::string& left : Folder().List()) Require(left == "x.lzh");
}

}  // namespace kozor::fuzz
