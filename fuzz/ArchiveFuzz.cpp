// ArchiveFuzz.cpp - any bytes as an archive, through the entry points of the loaded module: listed
// members can be extracted or give a code, and after a member is added or deleted the others are
// still listed, with the same bytes.
//
// Input: mode of the search (1 byte), search text (to a zero), archive.
#include <cstring>
#include <map>
#include <vector>

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

struct Contents {
  int code = 0;
  std::vector<std::uint8_t> bytes;
  bool operator==(const Contents&) const = default;
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
  contents.code =
      Archiver().extractMem(nullptr, line.c_str(), contents.bytes.data(),
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
    if (name.find('"') != std::string::npos || members.size() > 50) continue;
    members[name] = Extract(name, std::min<std::size_t>(record.size, kMostBytes));
  }
  return members;
}

}  // namespace

void TestInput(Input input) {
  constexpr char kAdded[] = "kozor fuzz.new";
  const std::uint32_t mode = input.Byte() % 2 == 0 ? 0x801202 : 0x801102;
  const std::string text = input.Text();
  Folder().Write("x.lzh", input.Rest());
  Search(text, mode);

  std::map<std::string, Contents> before = ExtractAll();
  const std::string name = "\"" + Archive() + "\" \"" + kAdded + "\"";
  const std::uint8_t data[] = {'n', 'e', 'w'};
  const int added = Archiver().compressMem(nullptr, ("-w0 " + name).c_str(), data, sizeof data,
                                           nullptr, nullptr, nullptr);
  std::map<std::string, Contents> after = ExtractAll();
  if (added == 0) {
    Require(Archiver().checkArchive(Archive().c_str(), 0) != 0);
    Require(Extract(kAdded, sizeof data).code == 0);
    after.erase(kAdded);
    before.erase(kAdded);
    Require(after == before);
    Require(Archiver().command(nullptr, ("d -w0 " + name).c_str(), nullptr, 0) == 0);
    after = ExtractAll();
  }
  Require(after == before);
}

}  // namespace kozor::fuzz
