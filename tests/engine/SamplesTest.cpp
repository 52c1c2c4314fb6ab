// SamplesTest.cpp - archives by many old programs, if a folder of them is available.
//
// KOZOR_TESTDATA names the folder; the default is ../shared/testdata beside the source tree.  Its
// lzh/MANIFEST.tsv lists the levels, methods, number of members and CRCs of each archive.
#include <algorithm>
#include <cstdlib>
#include <fstream>
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

struct Sample {
  std::string path;
  std::vector<std::string> methods;
  std::vector<std::string> crcs;
  std::string note;
};

std::vector<Sample> ReadManifest() {
  std::vector<Sample> samples;
  std::ifstream manifest(SampleFolder() / "MANIFEST.tsv");
  std::string line;
  std::getline(manifest, line);
  while (std::getline(manifest, line)) {
    std::vector<std::string> fields = Split(line, '\t');
    fields.resize(6);
    samples.push_back({fields[0], Split(fields[2], ','), Split(fields[4], ','), fields[5]});
  }
  return samples;
}

class EngineSamples : public EngineTest {
 protected:
  void Take(const Sample& sample) {
    fs::copy_file(SampleFolder() / sample.path, folder.Path("x.lzh"),
                  fs::copy_options::overwrite_existing);
  }

  // In the form of the list, or with a description of the failure.
  std::vector<std::string> ExtractedCrcs() {
    std::vector<std::string> crcs;
    for (const std::string& name : Names("x.lzh")) {
      const Extracted extracted = Extract("x.lzh", name);
      char crc[5];
      std::snprintf(crc, sizeof(crc), "%04x", codec::Crc16(extracted.bytes));
      crcs.push_back(extracted.code == 0 ? crc : "code " + std::to_string(extracted.code));
    }
    return crcs;
  }
};

TEST_F(EngineSamples, EveryCrcIsRight) {
  const std::vector<Sample> samples = ReadManifest();
  if (samples.empty()) GTEST_SKIP() << "no samples in " << SampleFolder();
  int checked = 0;
  for (const Sample& sample : samples) {
    SCOPED_TRACE(sample.path + " " + sample.note);
    if (sample.note.starts_with("original size")) continue;  // gigabytes
    ++checked;
    Take(sample);
    const bool isCut = sample.note.starts_with("cut off");
    EXPECT_EQ(Opens("x.lzh"), !isCut);
    if (isCut || sample.methods[0] == "-") continue;
    std::vector<std::string> expected = sample.crcs;
    std::vector<std::string> actual = ExtractedCrcs();
    std::erase(expected, "0000");  // directories and links, which aren't listed, and empty files
    std::erase(actual, "0000");
    EXPECT_EQ(actual, expected);
  }
  std::cout << checked << " of " << samples.size() << " samples checked\n";
}

TEST_F(EngineSamples, SizesBeyond4GiBAreListedAsTheLargest) {
  for (const Sample& sample : ReadManifest()) {
    if (!sample.note.starts_with("original size")) continue;
    Take(sample);
    const std::vector<UnlhaMemberRecord> found = Search("x.lzh");
    ASSERT_FALSE(found.empty());
    EXPECT_EQ(found[0].size, 0xFFFFFFFFU);
    EXPECT_EQ(ExtractInto("x.lzh", found[0].name, 100000).code, 0x801E);
    return;
  }
  GTEST_SKIP() << "no such sample in " << SampleFolder();
}

}  // namespace
}  // namespace kozor::test
