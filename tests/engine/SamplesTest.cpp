// SamplesTest.cpp - archives of many old programs, where a folder of them is at hand.
//
// The folder is named by KOZOR_TESTDATA, or stands as ../shared/testdata beside the source tree.
// Its lzh/MANIFEST.tsv tells for each archive the levels, methods, number of members and their
// CRCs.
#include <gmock/gmock.h>

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
  std::string methods;
  std::string crcs;
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
    samples.push_back({fields[0], fields[2], fields[4], fields[5]});
  }
  return samples;
}

bool IsDecodable(const std::string& methods) {
  using codec::Method;
  const std::pair<const char*, Method> rows[] = {{"-lh1-", Method::lh1}, {"-lh2-", Method::lh2},
                                                 {"-lh3-", Method::lh3}, {"-lhx-", Method::lhx},
                                                 {"-lzs-", Method::lzs}, {"-lz4-", Method::lz4},
                                                 {"-lz5-", Method::lz5}, {"-pm0-", Method::pm0},
                                                 {"-pm1-", Method::pm1}, {"-pm2-", Method::pm2}};
  for (const auto& [id, method] : rows) {
    if (methods.find(id) != std::string::npos && !codec::CanDecode(method)) return false;
  }
  return methods.find("-lk7-") == std::string::npos;  // a scheme of its own under the id -lh7-
}

std::string Hex(std::uint16_t value) {
  char text[5];
  std::snprintf(text, sizeof(text), "%04x", value);
  return text;
}

class SamplesTest : public EngineTest {
 protected:
  // CRCs of what is extracted, or a word on what went wrong.
  std::vector<std::string> CrcsOf(const std::string& path) {
    std::vector<std::string> crcs;
    folder.WriteFile("x.lzh", Bytes());
    fs::copy_file(path, folder.Path("x.lzh"), fs::copy_options::overwrite_existing);
    if (!Opens("x.lzh")) return {"not opened"};
    for (const std::string& name : Names("x.lzh")) {
      const Extracted extracted = Extract("x.lzh", name);
      crcs.push_back(extracted.code == 0 ? Hex(codec::Crc16(extracted.bytes))
                                         : "code " + std::to_string(extracted.code));
    }
    return crcs;
  }
};

TEST_F(SamplesTest, EveryCrcIsRight) {
  const std::vector<Sample> samples = ReadManifest();
  if (samples.empty()) GTEST_SKIP() << "no samples in " << SampleFolder();
  int checked = 0;
  for (const Sample& sample : samples) {
    SCOPED_TRACE(sample.path + " " + sample.methods + " " + sample.note);
    if (sample.note.starts_with("cut off")) {
      EXPECT_THAT(CrcsOf(SampleFolder() / sample.path), testing::ElementsAre("not opened"));
      continue;
    }
    if (sample.note.starts_with("original size")) continue;  // gigabytes
    if (!IsDecodable(sample.methods)) continue;
    // Directories and links have a CRC of 0000 in the list and are not shown.
    std::vector<std::string> expected = Split(sample.crcs, ',');
    std::vector<std::string> actual = CrcsOf(SampleFolder() / sample.path);
    std::erase(expected, "0000");
    std::erase(actual, "0000");
    if (sample.methods != "-") {
      EXPECT_THAT(actual, testing::ElementsAreArray(expected));
    } else {
      EXPECT_THAT(actual, testing::Not(testing::Contains("not opened")));
    }
    ++checked;
  }
  std::cout << checked << " of " << samples.size() << " samples checked\n";
}

TEST_F(SamplesTest, SizesBeyond4GiBAreListedAsTheLargest) {
  for (const Sample& sample : ReadManifest()) {
    if (!sample.note.starts_with("original size")) continue;
    folder.WriteFile("x.lzh", Bytes());
    fs::copy_file(SampleFolder() / sample.path, folder.Path("x.lzh"),
                  fs::copy_options::overwrite_existing);
    UnlhaMemberRecord record{};
    const HARC handle = engine.OpenArchive(nullptr, folder.Lib("x.lzh").c_str(), kSearchBelow);
    ASSERT_EQ(engine.FindFirst(handle, "*.*", &record), 0);
    EXPECT_EQ(record.size, 0xFFFFFFFFU);
    engine.CloseArchive(handle);
    EXPECT_EQ(ExtractInto("x.lzh", record.name, 100000).code, 0x801E);
    return;
  }
  GTEST_SKIP() << "no such sample in " << SampleFolder();
}

}  // namespace
}  // namespace kozor::test
