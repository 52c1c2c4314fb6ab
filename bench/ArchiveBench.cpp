// ArchiveBench.cpp - selects, adds and extracts many small files to measure the cost per file.  The
// trees are made in the directory for temporaries and removed again.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "ZorArchive.h"
#include "tests/support/TestFolder.h"

namespace {

// A tree of similar files, in folders of 1000 each.
struct Tree {
  Tree(int files, std::size_t fileBytes) {
    constexpr int kFilesInAFolder = 1000;
    for (int i = 0; i < files; ++i) {
      folder.WriteFile("tree/" + std::to_string(i / kFilesInAFolder) + "/file" + std::to_string(i) +
                           (i % 10 == 0 ? ".txt" : ".dat"),
                       kozor::test::TextBytes(fileBytes, static_cast<std::uint32_t>(i)));
    }
    std::filesystem::create_directory(folder.Path("work"));
  }

  // Selects everything in the tree, or what `mask` finds.
  ZorFind Selection(const char* mask = "*.*") const {
    ZorFind find;
    find.SetCurrentDirectoryA(folder.Lib("tree").c_str());
    find.AddTail(mask);
    return find;
  }

  kozor::test::TestFolder folder;
};

constexpr int kSearchFiles = 100'000;
constexpr int kArchiveFiles = 10'000;
constexpr std::size_t kFileBytes = 2000;

const Tree& SearchTree() {
  static const Tree tree(kSearchFiles, 0);
  return tree;
}

const Tree& ArchiveTree() {
  static const Tree tree(kArchiveFiles, kFileBytes);
  return tree;
}

void RequireSuccess(benchmark::State& state, int succeeded, const ZorArchive& archive) {
  if (!succeeded) state.SkipWithError(("error " + std::to_string(archive.GetError())).c_str());
}

void CountFiles(benchmark::State& state, int files) {
  state.SetItemsProcessed(state.iterations() * files);
}

void Search(benchmark::State& state, const ZorFind& find, int files) {
  for (auto _ : state) {
    ZorFileList names;
    find.Find(names, 0);
    if (names.GetCount() < files) state.SkipWithError("not every file was found");
  }
  CountFiles(state, kSearchFiles);
}

void BM_SearchEverythingIn100000Files(benchmark::State& state) {
  Search(state, SearchTree().Selection(), kSearchFiles);
}
BENCHMARK(BM_SearchEverythingIn100000Files)->Unit(benchmark::kMillisecond);

void BM_SearchByMaskIn100000Files(benchmark::State& state) {
  Search(state, SearchTree().Selection("*.txt"), kSearchFiles / 10);
}
BENCHMARK(BM_SearchByMaskIn100000Files)->Unit(benchmark::kMillisecond);

// Several masks: duplicates and exclusions have to be removed.
void BM_SearchWithExclusionIn100000Files(benchmark::State& state) {
  ZorFind find = SearchTree().Selection();
  find.AddTail("*.dat");
  find.AddTail(">*.txt");
  Search(state, find, kSearchFiles - kSearchFiles / 10);
}
BENCHMARK(BM_SearchWithExclusionIn100000Files)->Unit(benchmark::kMillisecond);

void MakeArchive(benchmark::State& state, const Tree& tree) {
  ZorArchive archive;
  archive.SetWorkDirectory(tree.folder.Lib("work").c_str());
  RequireSuccess(state, archive.Compress(tree.Selection(), tree.folder.Lib("a.lzh").c_str(), 0, 0),
                 archive);
}

void BM_Add10000SmallFiles(benchmark::State& state) {
  const Tree& tree = ArchiveTree();
  for (auto _ : state) MakeArchive(state, tree);
  CountFiles(state, kArchiveFiles);
  state.SetBytesProcessed(state.iterations() * kArchiveFiles * std::int64_t{kFileBytes});
}
BENCHMARK(BM_Add10000SmallFiles)->Unit(benchmark::kMillisecond);

// Into another folder every time: some file systems make new files slowly when many have just been
// deleted.
void BM_Extract10000SmallFiles(benchmark::State& state) {
  const Tree& tree = ArchiveTree();
  MakeArchive(state, tree);
  static int folders = 0;
  for (auto _ : state) {
    const std::string out = tree.folder.Lib("out" + std::to_string(++folders));
    ZorArchive archive;
    RequireSuccess(state, archive.Extract(tree.folder.Lib("a.lzh").c_str(), out.c_str(), nullptr),
                   archive);
  }
  CountFiles(state, kArchiveFiles);
  state.SetBytesProcessed(state.iterations() * kArchiveFiles * std::int64_t{kFileBytes});
}
BENCHMARK(BM_Extract10000SmallFiles)->Unit(benchmark::kMillisecond);

// Adding or deleting one file must not cost as much as ten thousand.
void BM_ReplaceOneOf10000Members(benchmark::State& state) {
  const Tree& tree = ArchiveTree();
  MakeArchive(state, tree);
  static constexpr unsigned char kContents[] = "contents of the one member";
  for (auto _ : state) {
    ZorArchive archive;
    archive.SetWorkDirectory(tree.folder.Lib("work").c_str());
    archive.SetOverwriteMode(1);
    RequireSuccess(state,
                   archive.CompressMem(tree.folder.Lib("a.lzh").c_str(), "one.txt", kContents,
                                       sizeof kContents, 1),
                   archive);
  }
}
BENCHMARK(BM_ReplaceOneOf10000Members)->Unit(benchmark::kMillisecond);

}  // namespace
