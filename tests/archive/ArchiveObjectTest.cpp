// ArchiveObjectTest.cpp - the archive object by itself: settings, copies, error values, questions.
#include "RecordedArchive.h"
#include "archive/Errors.h"

namespace kozor::test {
namespace {

using testing::ElementsAre;

class ArchiveObject : public RecordedArchiveTest {};

TEST_F(ArchiveObject, StartsWithTheDocumentedSettingsAndSettersReturnTheOldValue) {
  EXPECT_EQ(archive.GetError(), ZorErrorNone);
  EXPECT_EQ(archive.SetOverwriteMode(5), 0);
  EXPECT_EQ(archive.GetOverwriteMode(), 5);
  EXPECT_EQ(archive.SetExtractFileAttibuteMode(0), 1);
  EXPECT_EQ(archive.GetExtractFileAttibuteMode(), 0);
  EXPECT_EQ(archive.SetBackgroundMode(0), 1);
  EXPECT_EQ(archive.GetBackgroundMode(), 0);
  EXPECT_STREQ(archive.GetWorkDirectory(), "");
  archive.SetWorkDirectory("D:\\tmp");
  EXPECT_STREQ(archive.GetWorkDirectory(), "D:\\tmp");
  archive.SetWorkDirectory(nullptr);
  EXPECT_STREQ(archive.GetWorkDirectory(), "");
}

TEST(ArchiveErrors, CodesOfTheArchiversListKeepTheirPlaceAndAllOthersAreUnknown) {
  const struct {
    int code;
    int error;
  } rows[] = {{0, 0},      {0x8005, 5}, {0x8020, 32}, {0x802C, 44}, {0x8004, 4},
              {0x802D, 4}, {1, 4},      {-1, 4},      {0x18005, 4}};
  for (const auto& row : rows) EXPECT_EQ(ZorErrorFromEngine(row.code), row.error) << row.code;
}

TEST_F(ArchiveObject, CopiesCarrySettingsAndError) {
  archive.SetOverwriteMode(3);
  archive.SetWorkDirectory("D:\\tmp");
  EXPECT_EQ(archive.Extract("C:\\a.lzh", nullptr, nullptr), 0);
  const ZorArchive copy(archive);
  ZorArchive assigned;
  assigned = archive;
  for (const ZorArchive* other : {&copy, static_cast<const ZorArchive*>(&assigned)}) {
    EXPECT_EQ(other->GetError(), ZorErrorNoDirectory);
    EXPECT_EQ(other->GetOverwriteMode(), 3);
    EXPECT_STREQ(other->GetWorkDirectory(), "D:\\tmp");
  }
}

TEST_F(ArchiveObject, IsEnabledCallsNothingAndClearsAnEarlierError) {
  EXPECT_EQ(archive.Extract("C:\\a.lzh", nullptr, nullptr), 0);
  TakeCalls();
  recording.busy = true;
  EXPECT_EQ(archive.IsEnabled(), 1);
  EXPECT_EQ(archive.GetError(), ZorErrorNone);
  EXPECT_THAT(TakeCalls(), ElementsAre());
}

TEST_F(ArchiveObject, IsArchiveReturnsWhatTheArchiverSays) {
  recording.checkResult = 7;
  EXPECT_EQ(archive.IsArchive("C:\\none.lzh"), 7);
  EXPECT_THAT(TakeCalls(), ElementsAre("SetCursorMode 0", "CheckArchive C:\\none.lzh 1"));
  recording.checkResult = 0;
  EXPECT_EQ(archive.IsArchive("C:\\none.lzh"), 0);
  EXPECT_EQ(archive.GetError(), ZorErrorNone);
}

}  // namespace
}  // namespace kozor::test
