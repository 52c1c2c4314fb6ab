// EngineFixture.h - the archiver module as a caller uses it, and a work folder.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "tests/engine/Engine.h"
#include "tests/support/TestFolder.h"

namespace kozor::test {

using testing::ElementsAre;
using testing::IsEmpty;

inline constexpr std::uint32_t kSearchBelow = 0x801202;
inline constexpr std::uint32_t kSearchHere = 0x801102;

// The results of UnlhaExtractMem.
struct Extracted {
  int code = 0;
  Bytes bytes = {};
  std::int32_t time = 0;
  std::uint16_t attribute = 0;
  std::uint32_t written = 0;
};

// Compares without printing megabytes.
testing::AssertionResult SameBytes(const Bytes& actual, const Bytes& expected);

class EngineTest : public testing::Test {
 protected:
  ~EngineTest() override;

  int Command(const std::string& line) { return engine.Command(nullptr, line.c_str(), nullptr, 0); }
  // Every command line has the library's own options.  `a` with a base directory, both below the
  // test's folder.
  int Add(const std::string& archive, const std::string& base,
          const std::vector<std::string>& names, const std::string& switches = "-w0");
  int AddTree(const std::string& archive, const std::string& directory) {
    return Add(archive, directory, {}, "-w0 -d1");
  }
  int Delete(const std::string& archive, const std::vector<std::string>& names);
  int Compress(const std::string& archive, const std::string& name, const Bytes& data);
  Extracted Extract(const std::string& archive, const std::string& name);
  // With a buffer of exactly `capacity` bytes.
  Extracted ExtractInto(const std::string& archive, const std::string& name, std::size_t capacity);

  // 0 if the archive can't be opened.
  HARC Open(const std::string& archive, std::uint32_t mode = kSearchBelow);
  bool Opens(const std::string& archive);
  // All members that a search finds; none if the archive can't be opened.
  std::vector<UnlhaMemberRecord> Search(const std::string& archive, const std::string& text = "*.*",
                                        std::uint32_t mode = kSearchBelow);
  // Their names; fails the test if the archive can't be opened.
  std::vector<std::string> Names(const std::string& archive, const std::string& text = "*.*",
                                 std::uint32_t mode = kSearchBelow);

  // Calls `told` for each report while the object lives; it returns 0 to stop the archiver.
  using Told = std::function<int(UINT state, const UnlhaProgressRecord& record)>;
  void Listen(Told told);

  std::string Quoted(const std::string& name) const;
  // Of the first member of x.lzh, which we wrote: "-lh5-".
  std::string MethodOfFirstMember() const;
  // Temporaries of the archiver in the folder.
  std::vector<std::string> Temporaries() const;

  TestFolder folder;
  Engine engine;
};

}  // namespace kozor::test
