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
#include <vector>

#include "ZorArchive.h"
#include "engine/api/Unlha32.h"
#include "fuzz/Fuzz.h"

namespace kozor::fuzz {
namespace {

struct Module {
  Module() {
    const HMODULE module = LoadLibraryA("UNLHA32.DLL");
    Require(module != nullptr);
    const auto load = [&](auto& entryPoint, const char* name) {
      entryPoint = reinterpret_cast<std::remove_reference_t<decltype(entryPoint)>>(
          reinterpret_cast<void*>(GetProcAddress(module, name)));
      Require(entryPoint != nullptr);
    };
    load(command, "Unlha");
    load(checkArchive, "UnlhaCheckArchive");
    load(openArchive, "UnlhaOpenArchive");
    load(closeArchive, "UnlhaCloseArchive");
    load(findFirst, "UnlhaFindFirst");
    load(findNext, "UnlhaFindNext");
    load(getAttribute, "UnlhaGetAttribute");
    load(extractMem, "UnlhaExtractMem");
    load(compressMem, "UnlhaCompressMem");
  }
  decltype(&Unlha) command;
  decltype(&UnlhaCheckArchive) checkArchive;
  decltype(&UnlhaOpenArchive) openArchive;
  decltype(&UnlhaCloseArchive) closeArchive;
  decltype(&UnlhaFindFirst) findFirst;
  decltype(&UnlhaFindNext) findNext;
  decltype(&UnlhaGetAttribute) getAttribute;
  decltype(&UnlhaExtractMem) extractMem;
  decltype(&UnlhaCompressMem) compressMem;
};

constexpr std::size_t kMostMembers = 50;

struct Contents {
  int code = 0;
  std::string bytes;
  auto operator<=>(const Contents&) const = default;
};

const ScratchFolder& Folder() {
  static const ScratchFolder folder;
  return folder;
}
const Module& Archiver() {
  static const Module module;
  return module;
}
const std::string& Archive() {
  static const std::string path = Folder().LibraryPath("x.lzh");
  return path;
}

std::vector<UnlhaMemberRecord> Search(const std::string& text, std::uint32_t mode) {
  std::vector<UnlhaMemberRecord> found;
  const HARC handle = Archiver().openArchive(nullptr, Archive().c_str(), mode);
  if (handle == nullptr) return found;
  UnlhaMemberRecord record;
  for (int code = Archiver().findFirst(handle, text.c_str(), &record); code == 0;
       code = Archiver().findNext(handle, &record)) {
    Require(std::memchr(record.name, 0, sizeof record.name) != nullptr);
    Archiver().getAttribute(handle);
    found.push_back(record);
  }
  Archiver().closeArchive(handle);
  return found;
}

Contents Extract(const std::string& name, std::size_t most) {
  Contents contents;
  contents.bytes.resize(most);
  std::uint32_t written = 0;
  const std::string line = "\"" + Archive() + "\" \"" + name + "\"";
  contents.code = Archiver().extractMem(
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
  for (const UnlhaMemberRecord& record : Search("*.*", 0x801202)) {
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
  if (Archiver().command(nullptr, line.c_str(), nullptr, 0) != 0) return;
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
  extractor.Extract(Archive().c_str(), Folder().LibraryPath("target\\").c_str(), nullptr);
  // By path: what came there last, and the path as it was given.  Folders whose names differ in
  // case alone are one.
  std::map<std::string, std::pair<std::string, std::string>> last;
  for (std::size_t i = 0; i < extractor.targets.size(); ++i) {
    const auto& [name, path] = extractor.targets[i];
    std::string key = path;
    for (char& letter : std::span(key).first(key.rfind('\\') + 1)) {
      if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter + ('a' - 'A'));
    }
    last[key] = {i < extractor.done ? name : "", path};
  }
  for (const auto& [key, came] : last) {
    const auto member = members.find(came.first);
    if (came.first.empty() || member == members.end() || member->second.code != 0) continue;
    CFile file;
    Require(file.Open(came.second.c_str(), CFile::modeRead) != 0);
    std::string bytes(static_cast<std::size_t>(file.GetLength()), 0);
    Require(file.Read(bytes.data(), static_cast<unsigned>(bytes.size())) == bytes.size());
    Require(bytes == member->second.bytes);
  }
  Folder().RequireOnly({"x.lzh", "target"});
  Folder().Remove("target");
}

}  // namespace

void TestInput(Input input) {
  constexpr char kAdded[] = "kozor fuzz.new";
  const unsigned mode = input.Byte();
  const std::string text = input.Text();
  Folder().Write("x.lzh", input.Rest());
  Search(text, mode % 2 == 0 ? 0x801202 : 0x801102);

  std::map<std::string, Contents> before = ExtractAll();
  if (mode % 8 < 2) ExtractToFiles(before);
  if (mode % 8 >= 6) DeleteSome(before);
  const std::string name = "\"" + Archive() + "\" \"" + kAdded + "\"";
  const std::uint8_t data[] = {'n', 'e', 'w'};
  const int added = Archiver().compressMem(nullptr, ("-z1 -w0 " + name).c_str(), data, sizeof data,
                                           nullptr, nullptr, nullptr);
  std::map<std::string, Contents> after = ExtractAll();
  if (added == 0) {
    Require(Archiver().checkArchive(Archive().c_str(), 0) != 0);
    Require(Extract(kAdded, sizeof data).code == 0);
    after.erase(kAdded);
    before.erase(kAdded);
    Require(after == before);
    const int deleted = Archiver().command(nullptr, ("d -w0 " + name).c_str(), nullptr, 0);
    after = ExtractAll();
    Require(after.erase(kAdded) == (deleted == 0 ? 0 : 1));
  }
  Require(after == before);
  Folder().RequireOnly({"x.lzh"});
}

}  // namespace kozor::fuzz
