// ScaleTest.cpp - the cost of an operation grows with the number of files, not with its square.
#include <ctime>
#include <functional>

#include "real/RealArchive.h"

namespace kozor::test {
namespace {

class Scale : public RealArchiveTest {
 protected:
  // The processor time that a step takes, in seconds.  Other programs on the machine don't count.
  static double Cost(const std::function<void()>& step) {
    const std::clock_t start = std::clock();
    step();
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  }

  void MakeFiles(int count) {
    std::filesystem::remove_all(folder.Path("src"));
    std::filesystem::remove_all(folder.Path("out"));
    for (int i = 0; i < count; ++i) {
      folder.WriteFile("src/" + std::to_string(i % 50) + "/" + std::to_string(i) + ".txt",
                       TextBytes(200, static_cast<std::uint32_t>(i)));
    }
  }

  // Ten times the files may cost twenty times as much, and a second.  A square would be a hundred.
  static void ExpectProportional(double few, double many) { EXPECT_LT(many, 20 * few + 1.0); }
};

TEST_F(Scale, AddingExtractingAndDeletingTenThousandFilesIsInProportion) {
  folder.WriteFile("work/keep", "");
  archive.SetWorkDirectory(Lib("work").c_str());
  double adding[2];
  double extracting[2];
  double deleting[2];
  for (const int run : {0, 1}) {
    MakeFiles(run == 0 ? 1000 : 10'000);
    adding[run] = Cost([&] { EXPECT_EQ(Compress(), 1); });
    extracting[run] = Cost([&] { EXPECT_EQ(Extract(), 1); });
    EXPECT_EQ(CompareTrees(folder.Path("src"), folder.Path("out")), "");
    ZorFind half;
    half.AddTail("*1.txt");
    half.AddTail("*3.txt");
    deleting[run] = Cost([&] { EXPECT_EQ(archive.Delete(half, ArchivePath().c_str()), 1); });
  }
  ExpectProportional(adding[0], adding[1]);
  ExpectProportional(extracting[0], extracting[1]);
  ExpectProportional(deleting[0], deleting[1]);
}

TEST_F(Scale, AddingOneFileAfterTheOtherIsInProportion) {
  double adding[2];
  for (const int run : {0, 1}) {
    MakeFiles(run == 0 ? 300 : 3000);
    adding[run] = Cost([&] { EXPECT_EQ(Compress(), 1); });
  }
  ExpectProportional(adding[0], adding[1]);
}

}  // namespace
}  // namespace kozor::test
