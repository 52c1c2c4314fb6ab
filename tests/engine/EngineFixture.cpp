// EngineFixture.cpp - see EngineFixture.h.
#include "tests/engine/EngineFixture.h"

#include <algorithm>

namespace kozor::test {
namespace {

const char kOptions[] = " -+ -gm1 -a1 -c1 -m1 -x1 -n";

std::function<int(UINT, const UnlhaProgressRecord&)> listener;

int CALLBACK Callback(HWND, UINT, UINT state, void* record) {
  return listener(state, *static_cast<UnlhaProgressRecord*>(record));
}

std::string Joined(const std::vector<std::string>& words) {
  std::string line;
  for (const std::string& word : words) line += " \"" + word + '"';
  return line;
}

}  // namespace

testing::AssertionResult SameBytes(const Bytes& actual, const Bytes& expected) {
  if (actual == expected) return testing::AssertionSuccess();
  const auto [at, ignored] =
      std::mismatch(actual.begin(), actual.end(), expected.begin(), expected.end());
  return testing::AssertionFailure() << actual.size() << " bytes instead of " << expected.size()
                                     << ", alike up to " << at - actual.begin();
}

EngineTest::~EngineTest() {
  engine.KillOwnerWindowEx(nullptr);
  listener = nullptr;
}

std::string EngineTest::Quoted(const std::string& name) const {
  return " \"" + folder.Lib(name) + '"';
}

int EngineTest::Add(const std::string& archive, const std::string& base,
                    const std::vector<std::string>& names, const std::string& switches) {
  const std::string line = std::string("a") + kOptions + " " + switches + Quoted(archive) + " \"" +
                           folder.Lib(base) + "\\\"" + Joined(names);
  return Command(line);
}

int EngineTest::Delete(const std::string& archive, const std::vector<std::string>& names) {
  const std::string line = std::string("d") + kOptions + " -w0" + Quoted(archive) + Joined(names);
  return Command(line);
}

int EngineTest::Compress(const std::string& archive, const std::string& name, const Bytes& data) {
  const std::string line = kOptions + std::string(" -w0") + Quoted(archive) + " \"" + name + '"';
  return engine.CompressMem(nullptr, line.c_str(), data.data(),
                            static_cast<std::uint32_t>(data.size()), nullptr, nullptr, nullptr);
}

Extracted EngineTest::ExtractInto(const std::string& archive, const std::string& name,
                                  std::size_t capacity) {
  const std::string line = kOptions + Quoted(archive) + " \"" + name + '"';
  Extracted result;
  result.bytes.resize(capacity);
  result.code = engine.ExtractMem(nullptr, line.c_str(), result.bytes.data(),
                                  static_cast<std::uint32_t>(capacity), &result.time,
                                  &result.attribute, &result.written);
  EXPECT_LE(result.written, capacity);
  return result;
}

Extracted EngineTest::Extract(const std::string& archive, const std::string& name) {
  const auto found = Search(archive, '"' + name + '"');
  return found.empty() ? Extracted{.code = -1} : ExtractInto(archive, name, found[0].size);
}

HARC EngineTest::Open(const std::string& archive, std::uint32_t mode) {
  return engine.OpenArchive(nullptr, folder.Lib(archive).c_str(), mode);
}

bool EngineTest::Opens(const std::string& archive) {
  return engine.CloseArchive(Open(archive)) == 0;
}

std::vector<UnlhaMemberRecord> EngineTest::Search(const std::string& archive,
                                                  const std::string& text, std::uint32_t mode) {
  std::vector<UnlhaMemberRecord> records;
  const HARC handle = Open(archive, mode);
  UnlhaMemberRecord record{};
  for (int found = engine.FindFirst(handle, text.c_str(), &record); found == 0;
       found = engine.FindNext(handle, &record)) {
    records.push_back(record);
  }
  engine.CloseArchive(handle);
  return records;
}

std::vector<std::string> EngineTest::Names(const std::string& archive, const std::string& text,
                                           std::uint32_t mode) {
  EXPECT_TRUE(Opens(archive)) << archive;
  std::vector<std::string> names;
  for (const UnlhaMemberRecord& record : Search(archive, text, mode))
    names.emplace_back(record.name);
  return names;
}

void EngineTest::Listen(Told told) {
  listener = std::move(told);
  EXPECT_EQ(engine.SetOwnerWindowEx(nullptr, Callback), 1);
}

std::string EngineTest::MethodOfFirstMember() const {
  const Bytes archive = folder.ReadFile("x.lzh");
  return {archive.begin() + 2, archive.begin() + 7};
}

std::vector<std::string> EngineTest::Temporaries() const {
  std::vector<std::string> found;
  for (const std::string& name : folder.List()) {
    if (name.find("lhtmp") != std::string::npos) found.push_back(name);
  }
  return found;
}

}  // namespace kozor::test
