// SamplesTest.cpp - archives by many old programs, if a folder of them is available.
//
// KOZOR_TESTDATA names the folder; the default is ../shared/testdata beside the source tree.  Its
// lzh/MANIFEST.tsv lists the levels, methods, number of members and CRCs of each archive;
// Samples.tsv beside this file lists the names, sizes and times that other programs show for their
// files.
#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <iostream>
#include <map>
#include <sstream>

#include "engine/codec/Codec.h"
#include "tests/engine/EngineFixture.h"

namespace kozor::test {
namespace {

namespace fs = std::filesystem;

fs::path SampleFolder() {
  const char* named = std::getenv("KOZOR_TESTDATA");
  const fs::path folder =
      named != nullptr ? fs::path(named) : fs::path(KOZOR_SOURCE_DIR) / "../shared/testdata";
  return fs::weakly_canonical(folder / "lzh");
}

std::vector<std::string> Split(const std::string& text, char separator) {
  std::vector<std::string> fields;
  std::istringstream stream(text);
  for (std::string field; std::getline(stream, field, separator);) fields.push_back(field);
  return fields;
}

// The lines of a table but the first, cut at tabulators.
std::vector<std::vector<std::string>> ReadTable(const fs::path& path) {
  std::vector<std::vector<std::string>> rows;
  std::ifstream table(path);
  std::string line;
  std::getline(table, line);
  while (std::getline(table, line)) {
    rows.push_back(Split(line, '\t'));
    rows.back().resize(6);
  }
  return rows;
}

// "name size time" of the files in each archive.
std::map<std::string, std::vector<std::string>> ReadFiles() {
  std::map<std::string, std::vector<std::string>> files;
  for (auto& fields : ReadTable(fs::path(KOZOR_SOURCE_DIR) / "tests/engine/Samples.tsv")) {
    std::ranges::replace(fields[1], '/', '\\');
    files[fields[0]].push_back(fields[1] + " " + fields[2] + " " + fields[3]);
  }
  return files;
}

class EngineSamples : public EngineTest {
 protected:
  // In the forms of the lists, or with a description of the failure.
  void ExtractAll(std::vector<std::string>& crcs, std::vector<std::string>& files) {
    for (const UnlhaMemberRecord& record : Search("x.lzh")) {
      const Extracted extracted = ExtractInto("x.lzh", record.name, record.size);
      char crc[5];
      std::snprintf(crc, sizeof(crc), "%04x", codec::Crc16(extracted.bytes));
      crcs.push_back(extracted.code == 0 ? crc : "code " + std::to_string(extracted.code));
      const std::time_t seconds = extracted.time;
      char time[20];
      std::strftime(time, sizeof(time), "%Y-%m-%dT%H:%M:%S", std::gmtime(&seconds));
      files.push_back(record.name + (" " + std::to_string(record.size)) + " " + time);
    }
  }
};

TEST_F(EngineSamples, EveryCrcNameSizeAndTimeIsRight) {
  const auto samples = ReadTable(SampleFolder() / "MANIFEST.tsv");
  if (samples.empty()) GTEST_SKIP() << "no samples in " << SampleFolder();
  SetEnvironment("TZ", "UTC");
  const auto listed = ReadFiles();
  int checked = 0;
  int compared = 0;
  for (const auto& sample : samples) {
    const std::string& path = sample[0];
    const std::string& note = sample[5];
    SCOPED_TRACE(path + " " + note);
    ++checked;
    fs::remove(folder.Path("x.lzh"));
    fs::copy_file(SampleFolder() / path, folder.Path("x.lzh"));
    fs::permissions(folder.Path("x.lzh"), fs::perms::owner_write, fs::perm_options::add);
    if (note.starts_with("original size")) {  // gigabytes
      EXPECT_EQ(Search("x.lzh").at(0).size, 0xFFFFFFFFU);
      EXPECT_EQ(ExtractInto("x.lzh", Search("x.lzh").at(0).name, 100000).code, 0x801E);
      continue;
    }
    EXPECT_TRUE(Opens("x.lzh"));
    std::vector<std::string> expected = Split(sample[4], ',');
    std::vector<std::string> actual, files;
    ExtractAll(actual, files);
    if (const auto found = listed.find(path); found != listed.end()) {
      EXPECT_EQ(files, found->second);
      compared += static_cast<int>(files.size());
    }
    if (note.starts_with("cut off")) expected = {"code " + std::to_string(0x8014)};
    if (sample[2] == "-") continue;
    std::erase(expected, "0000");  // directories and links, which aren't listed, and empty files
    std::erase(actual, "0000");
    EXPECT_EQ(actual, expected);
  }
  SetEnvironment("TZ", nullptr);
  std::cout << checked << " of " << samples.size() << " samples checked, names, sizes and times of "
            << compared << " files\n";
}

}  // namespace
}  // namespace kozor::test
