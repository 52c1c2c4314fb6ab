// KozorProgram.cpp - see KozorProgram.h.
#include "tests/examples/KozorProgram.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <sstream>

namespace kozor::test {

namespace fs = std::filesystem;

namespace {

// CRC-16 with the reflected polynomial 0xA001, eight steps at a time.
std::uint16_t Crc16(std::string_view bytes) {
  static const std::array<std::uint16_t, 256> kTable = [] {
    std::array<std::uint16_t, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i) {
      std::size_t value = i;
      for (int bit = 0; bit < 8; ++bit) value = value >> 1 ^ (value % 2 * 0xA001);
      table[i] = static_cast<std::uint16_t>(value);
    }
    return table;
  }();
  std::uint16_t crc = 0;
  for (const char byte : bytes) {
    const unsigned int index = (crc ^ static_cast<unsigned char>(byte)) & 0xFFU;
    crc = static_cast<std::uint16_t>(crc >> 8 ^ kTable[index]);
  }
  return crc;
}

void PutNumber(Bytes& bytes, std::uint64_t number, std::size_t width) {
  for (std::size_t i = 0; i < width; ++i) {
    bytes.push_back(static_cast<std::uint8_t>(number >> (8 * i)));
  }
}

}  // namespace

std::string Quoted(std::string_view word) {
  std::string quoted = "'";
  for (const char character : word) {
    if (character == '\'') {
      quoted += "'\\''";
    } else {
      quoted += character;
    }
  }
  return quoted + "'";
}

CommandResult KozorProgram::Kozor(const std::vector<std::string>& words) const {
  std::string command = "$KOZOR";
  for (const std::string& word : words) command += " " + Quoted(word);
  return Shell(command + " < /dev/null");
}

CommandResult KozorProgram::Shell(const std::string& command) const {
  return RunCommand("cd " + Quoted(folder.Path().string()) + " && KOZOR=" + Quoted(KOZOR_PROGRAM) +
                    " && { " + command + "; }");
}

void KozorProgram::MustRun(const std::vector<std::string>& words) const {
  const CommandResult result = Kozor(words);
  ASSERT_EQ(result.status, 0) << result.output;
  EXPECT_EQ(result.output, "");
}

std::vector<std::string> KozorProgram::Members(const std::string& archive) const {
  const CommandResult result = Kozor({"list", archive});
  EXPECT_EQ(result.status, 0) << result.output;
  constexpr std::size_t kColumnsInFrontOfNames = 39;
  std::vector<std::string> names;
  std::istringstream lines(result.output);
  for (std::string line; std::getline(lines, line);) {
    if (line.size() > kColumnsInFrontOfNames) names.push_back(line.substr(kColumnsInFrontOfNames));
  }
  return names;
}

std::vector<std::string> KozorProgram::TopNames() const {
  std::vector<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder.Path())) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Bytes StoredMember(std::string_view name, std::string_view contents) {
  constexpr std::uint32_t kDosTime = 0x5A21'6000;  // 2025-01-01 12:00:00
  constexpr std::uint8_t kArchiveAttribute = 0x20;
  Bytes rest = {'-', 'l', 'h', '0', '-'};
  PutNumber(rest, contents.size(), 4);
  PutNumber(rest, contents.size(), 4);
  PutNumber(rest, kDosTime, 4);
  PutNumber(rest, kArchiveAttribute, 1);
  PutNumber(rest, 0, 1);  // header level
  PutNumber(rest, name.size(), 1);
  rest.insert(rest.end(), name.begin(), name.end());
  PutNumber(rest, Crc16(contents), 2);

  Bytes member;
  PutNumber(member, rest.size(), 1);
  PutNumber(member, std::accumulate(rest.begin(), rest.end(), std::uint64_t{0}), 1);
  member.insert(member.end(), rest.begin(), rest.end());
  member.insert(member.end(), contents.begin(), contents.end());
  return member;
}

Bytes StoredArchive(const std::vector<Bytes>& members) {
  Bytes archive;
  for (const Bytes& member : members) archive.insert(archive.end(), member.begin(), member.end());
  archive.push_back(0);
  return archive;
}

}  // namespace kozor::test
