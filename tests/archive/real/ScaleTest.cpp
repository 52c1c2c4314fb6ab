// ScaleTest.cpp - the cost of an operation grows with the number of files, not with its square.
#include <ctime>

#include "real/RealArchive.h"

namespace kozor::test {
namespace {

class ArchiveScale : public ArchiveReal {
 protected:
  using Steps = std::vector<std::function<int()>>;

  // With ten times the files each step may take twenty times as long, plus a second.  Quadratic
  // growth would give a hundred times.
  void ExpectProportion(int files, const Steps& steps) {
    const std::vector<double> few = Costs(files, steps);
    const std::vector<double> many = Costs(10 * files, steps);
    for (std::size_t i = 0; i < steps.size(); ++i) EXPECT_LT(many[i], 20 * few[i] + 1) << i;
  }

  // With several masks, duplicates and exclusions are looked for.
  const std::function<int()> add = [this] {
    const ZorFind find = Selection(Lib("src"), {"*.*", "*.txt", ">*0.none"});
    return archive.Compress(find, path.c_str(), 0, 0);
  };
  const std::function<int()> replace = [this] {
    archive.SetOverwriteMode(1);
    return archive.Compress(Selection(Lib("src"), {"*.*"}), path.c_str(), 1, 0);
  };
  const std::function<int()> extract = [this] { return Extract(); };
  const std::function<int()> deleteFifth = [this] {
    return archive.Delete(Selection("", {"*1.txt", "*3.txt"}), path.c_str());
  };

 private:
  // The CPU seconds of each step, independent of other programs.
  std::vector<double> Costs(int files, const Steps& steps) {
    for (const char* name : {"src", "out"}) std::filesystem::remove_all(folder.Path(name));
    for (int i = 0; i < files; ++i) {
      folder.WriteFile("src/" + std::to_string(i % 50) + "/" + std::to_string(i) + ".txt",
                       TextBytes(200, static_cast<std::uint32_t>(i)));
    }
    std::vector<double> costs;
    for (const auto& step : steps) {
      const std::clock_t start = std::clock();
      EXPECT_EQ(step(), 1);
      costs.push_back(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return costs;
  }
};

TEST_F(ArchiveScale, TenThousandFilesByAResponseFileCostInProportion) {
  folder.WriteFile("work/keep", "");
  archive.SetWorkDirectory(Lib("work").c_str());
  ExpectProportion(1000, {add, replace, extract, deleteFifth});
}

}  // namespace
}  // namespace kozor::test
