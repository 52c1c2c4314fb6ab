// StreamFuzz.cpp - any bytes as a CArchive stream: values that can be loaded can be stored and
// loaded again unchanged.
//
// Input: how many values (1 byte), the kind of each (1 byte), the stream.
#include <variant>

#include "fuzz/Fuzz.h"
#include "platform/classlib/ClassLib.h"
#include "tests/support/TestFolder.h"

namespace kozor::fuzz {
namespace {

using Value = std::variant<BYTE, WORD, DWORD, CString>;

Value Load(CArchive& archive, unsigned kind) {
  const auto load = [&](auto value) -> Value {
    archive >> value;
    return value;
  };
  switch (kind % 5) {
    case 0:
      return load(BYTE{});
    case 1:
      return load(WORD{});
    case 2:
      return load(DWORD{});
    case 3:
      return archive.ReadCount();
    default:
      return load(CString());
  }
}

void Store(CArchive& archive, unsigned kind, const Value& value) {
  if (kind % 5 == 3) return archive.WriteCount(std::get<DWORD>(value));
  std::visit([&](const auto& stored) { archive << stored; }, value);
}

// As many as the stream has.
std::vector<Value> LoadAll(const std::string& path, const std::vector<unsigned>& kinds) {
  std::vector<Value> values;
  CFile file(path.c_str(), CFile::modeRead);
  CArchive archive(&file, CArchive::load);
  try {
    for (const unsigned kind : kinds) values.push_back(Load(archive, kind));
  } catch (CArchiveException* end) {
    end->Delete();
  }
  return values;
}

}  // namespace

void TestInput(Input input) {
  static const test::TestFolder folder;
  std::vector<unsigned> kinds(input.Byte() % 32U);
  for (unsigned& kind : kinds) kind = input.Byte();
  folder.WriteFile("stream", input.Rest());

  const std::vector<Value> values = LoadAll(folder.Lib("stream"), kinds);
  kinds.resize(values.size());
  {
    CFile file(folder.Lib("again").c_str(), CFile::modeCreate | CFile::modeWrite);
    CArchive archive(&file, CArchive::store);
    for (std::size_t i = 0; i < values.size(); ++i) Store(archive, kinds[i], values[i]);
    archive.Close();
  }
  Require(LoadAll(folder.Lib("again"), kinds) == values);
}

}  // namespace kozor::fuzz
