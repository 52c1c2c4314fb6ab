// VolumesTest.cpp - kozor backup, restore and info.
#include "tests/kozor/KozorProgram.h"
#include "tests/support/Ability.h"

namespace kozor::test {
namespace {

class KozorVolumes : public KozorProgram {
 protected:
  KozorVolumes() {
    MakeTree(folder, "tree",
             {{"a.txt", 100}, {"big.bin", 150'000}, {"sub/c.txt", 7}, {"sub/empty", 0}, {"z", 1}});
  }

  void BackUp(const Words& options, const std::string& volume) const {
    MustRun(Words{"backup", "--force"} + options + Words{volume, "-C", "tree", "."});
  }

  std::string Restored(const std::string& volume) const {
    fs::remove_all(folder.Path("out"));
    MustRun({"restore", volume, "-d", "out"});
    return CompareTrees(folder.Path("tree"), folder.Path("out"));
  }
};

TEST_F(KozorVolumes, BringATreeBackFromVolumesOfEitherFormat) {
  for (const char* format : {"100", "101"}) {
    BackUp({"--format", format, "--volume-size", "20K"}, "vol/set-#.vol");
    EXPECT_EQ(fs::file_size(folder.Path("vol/set-1.vol")), 20U << 10);
    EXPECT_TRUE(folder.Exists("vol/set-8.vol"));
    EXPECT_EQ(Restored("vol/set-#.vol"), "");
  }
}

TEST_F(KozorVolumes, KeepTheLastVolumeOfTheOldFormatReadable) {
  folder.WriteFile("tree/z", "12");
  // Without an identity the last byte would be in a volume too short to be accepted.
  BackUp({"--format", "100", "--id", "", "--volume-size", "150300"}, "s#");
  EXPECT_EQ(Restored("s#"), "");
  const CommandResult info = Kozor({"info", "s1"});
  EXPECT_THAT(info.output, HasSubstr("Memo:                 \n"));
}

TEST_F(KozorVolumes, RestoreNamedFilesOnly) {
  BackUp({"--volume-size", "20K"}, "set-#.vol");
  MustRun({"restore", "set-#.vol", "-d", "out", "*.txt"});
  EXPECT_THAT(folder.List("out"), ElementsAre("a.txt", "sub/", "sub/c.txt"));
  EXPECT_THAT(MustFail({"restore", "set-#.vol", "-d", "out2", "z", "none"}),
              HasSubstr("none: no such file in the set"));
  EXPECT_THAT(folder.List("out2"), ElementsAre("z"));
}

TEST_F(KozorVolumes, ShowWhatTheyHold) {
  BackUp({"--volume-size", "100000", "--id", "demo", "--label", "my disk", "--memo", "hello"},
         "set-#.vol");
  const std::string first = Kozor({"info", "set-1.vol"}).output;
  EXPECT_THAT(first, AllOf(HasSubstr("Format:        1.01\n"), HasSubstr("Number:        1\n"),
                           HasSubstr("Files in set:  5\n"), HasSubstr("Identity:      demo\n"),
                           HasSubstr("Label:         my disk\n"),
                           HasSubstr("Memo:          hello\n"), HasSubstr("       100  2001-09-09"),
                           HasSubstr("  ---a  big.bin\n"), Not(HasSubstr("sub/c.txt"))));
  const std::string second = Kozor({"info", "set-2.vol"}).output;
  EXPECT_THAT(second, AllOf(HasSubstr("Number:        2\n"), HasSubstr("  sub/c.txt\n"),
                            HasSubstr("  z\n"), Not(HasSubstr("big.bin"))));
  EXPECT_EQ(Kozor({"info", "set-#.vol"}).output, first + "\n" + second);
  folder.WriteFile("text", std::string(200, 'x'));
  EXPECT_THAT(MustFail({"info", "text"}), HasSubstr("text: not a volume of a backup set"));
}

TEST_F(KozorVolumes, CantTellTheTerminalWhatToDo) {
  BackUp({"--label", "\x1b[2J\t\xC2\x9B \xE2\x80\xAE ! ok \xE3\x81\x82"}, "a.vol");
  folder.Damage("a.vol", folder.ReadText("a.vol").find("! ok"), 0xFF);
  EXPECT_THAT(
      Kozor({"info", "a.vol"}).output,
      HasSubstr("Label:         \\x1B[2J\\x09\\xC2\\x9B \\xE2\\x80\\xAE \\xFF ok \xE3\x81\x82\n"));
}

// Modes, links and times, which comparing trees ignores.
constexpr const char* kFacts = "find . -mindepth 1 -printf '%P %y %m %Ts %l\\n' | LC_ALL=C sort";

TEST_F(KozorVolumes, BringBackWithTheirCatalogueWhatTheFormatCantHold) {
  Shell("cd tree && mkdir empty sub/deep");
  if (Can(Ability::MakingLinks)) {
    Shell(
        "cd tree && chmod 700 empty sub/deep && chmod 750 a.txt && ln -s a.txt link && ln -s sub "
        "folder && ln -s nowhere dangling && ln -s ring ring");
  }
  Shell("cd tree && touch -d 2001-02-03 empty sub");
  BackUp({"--volume-size", "50K"}, "set-#.vol");
  EXPECT_EQ(Shell("sha256sum --quiet -c set-*.sha256").output, "");
  EXPECT_THAT(Kozor({"verify", "set-#.vol", "-C", "tree"}).output,
              testing::EndsWith("on 3 volumes OK\n"));
  MustRun({"restore", "set-#.vol", "-d", "out"});
  const auto facts = [&](const std::string& tree) {
    return Shell("cd " + tree + " && " + kFacts).output;
  };
  EXPECT_EQ(facts("out"), facts("tree"));
  EXPECT_EQ(Shell("diff -r --no-dereference tree out").output, "");
}

TEST_F(KozorVolumes, ShowWithTheirCatalogueWhatHasChangedOrIsLost) {
  BackUp({"--volume-size", "50K"}, "set-#.vol");
  folder.Damage("set-2.vol", 30'000, 1);
  EXPECT_THAT(MustFail({"verify", "set-#.vol"}),
              AllOf(HasSubstr("set-2.vol: changed"), HasSubstr("big.bin: changed on volume 1")));
  EXPECT_THAT(MustFail({"restore", "set-#.vol", "-d", "out"}), HasSubstr("big.bin: changed"));
  EXPECT_THAT(folder.List("out"), ElementsAre("a.txt", "sub/", "sub/c.txt", "sub/empty", "z"));
  fs::remove(folder.Path("set-2.vol"));
  fs::remove_all(folder.Path("out"));
  EXPECT_THAT(MustFail({"restore", "set-#.vol", "-d", "out"}), HasSubstr("volume 2 is needed"));
  EXPECT_THAT(MustFail({"restore", "--continue", "set-#.vol", "-d", "out"}),
              HasSubstr("big.bin: lost with"));
  EXPECT_THAT(folder.List("out"), ElementsAre("a.txt", "sub/", "sub/c.txt", "sub/empty", "z"));
  // Restoring one file needs only its volumes.
  fs::remove_all(folder.Path("out"));
  MustRun({"restore", "set-#.vol", "-d", "out", "z"});
  EXPECT_THAT(folder.List("out"), ElementsAre("z"));
}

TEST_F(KozorVolumes, WithoutACatalogueGoOnAfterAMissingOne) {
  BackUp({"--volume-size", "50K", "--no-catalogue"}, "set-#.vol");
  fs::remove(folder.Path("set-2.vol"));
  EXPECT_THAT(MustFail({"restore", "--continue", "set-#.vol", "-d", "out"}),
              AllOf(HasSubstr("set-2.vol"), HasSubstr("big.bin: lost with")));
  EXPECT_EQ(Shell("rm tree/big.bin; diff -r tree out").output, "");
  fs::remove(folder.Path("set-1.vol"));
  fs::remove_all(folder.Path("out"));
  EXPECT_THAT(MustFail({"restore", "--continue", "set-#.vol", "-d", "out"}),
              HasSubstr("of the set are lost with the missing volumes; their names are unknown"));
  EXPECT_EQ(Shell("cmp tree/z out/z").output, "");

  // A stored volume's records aren't taken for the set's.
  ASSERT_EQ(Shell("mkdir nested && { head -c 60000 /dev/zero; cat set-3.vol; } > nested/b").status,
            0);
  MustRun({"backup", "--volume-size", "40000", "--no-catalogue", "n-#.vol", "-C", "nested", "."});
  fs::remove(folder.Path("n-1.vol"));
  EXPECT_THAT(MustFail({"restore", "--continue", "n-#.vol", "-d", "none"}),
              HasSubstr("n-2.vol: no file on it can be identified for certain"));
  EXPECT_FALSE(folder.Exists("none/z"));
}

TEST_F(KozorVolumes, OfAnotherSetAreRefused) {
  BackUp({"--volume-size", "100000"}, "set-#.vol");
  BackUp({"--volume-size", "100000"}, "other-#.vol");
  folder.WriteFile("set-2.vol", folder.ReadFile("other-2.vol"));
  EXPECT_THAT(MustFail({"restore", "set-#.vol", "-d", "out"}),
              HasSubstr("set-2.vol: volume 2 is needed, but it isn't a volume, or belongs to "
                        "another set"));
}

TEST_F(KozorVolumes, NeverWaitForAUserWhoIsntThere) {
  EXPECT_THAT(MustFail({"backup", "--volume-size", "20K", "disk.vol", "-C", "tree", "."}),
              AllOf(HasSubstr("disk.vol: volume 2 is needed"),
                    HasSubstr("there is no terminal to ask on")));
  EXPECT_THAT(MustFail({"restore", "disk.vol", "-d", "out"}),
              HasSubstr("disk.vol: volume 2 is needed"));
}

TEST_F(KozorVolumes, AskTheUserForTheNextMedium) {
  if (!HaveProgram("script")) GTEST_SKIP() << "the program script isn't installed";
  // The user changes nothing the first time, and then takes the medium away.
  const CommandResult result = Shell(
      "said() { for i in $(seq 300); do grep -qs \"$1\" log && return; sleep .1; done; }; "
      "(said wanted; echo; said 'of the same set'; mv disk.vol first; echo) | "
      "script -qefc \"$KOZOR backup --volume-size 100000 disk.vol -C tree .\" log");
  EXPECT_EQ(result.status, 0) << result.output;
  EXPECT_THAT(result.output, AllOf(HasSubstr("disk.vol: volume 2 is needed."),
                                   HasSubstr("but this is volume 1 of the same set")));
  fs::rename(folder.Path("first"), folder.Path("set-1.vol"));
  fs::rename(folder.Path("disk.vol"), folder.Path("set-2.vol"));
  EXPECT_EQ(Restored("set-#.vol"), "");
}

TEST_F(KozorVolumes, ReplaceNothingUnaskedButWhatAKilledRunLeft) {
  folder.WriteFile("notes.txt", "not a volume");
  Words files = {"notes.txt"};
  if (Can(Ability::MakingLinks) && Shell("mkfifo pipe").status == 0) files.push_back("pipe");
  for (const std::string& file : files) {
    EXPECT_THAT(MustFail({"backup", "--force", file, "tree"}),
                HasSubstr("a file that isn't a volume is in its place"));
    EXPECT_THAT(MustFail({"info", file}), HasSubstr(file + ": "));
  }
  EXPECT_EQ(folder.ReadFile("notes.txt").size(), 12U);
  folder.WriteFile("s1", "");
  MustRun({"backup", "s#", "tree"});
  const Bytes before = folder.ReadFile("s1");
  EXPECT_THAT(MustFail({"backup", "s#", "tree"}), HasSubstr("volume 1 of another set"));
  EXPECT_EQ(folder.ReadFile("s1"), before);
}

TEST_F(KozorVolumes, LeaveTheirOwnFilesOut) {
  BackUp({}, "tree/set-#.vol");
  BackUp({}, "tree/set-#.vol");
  EXPECT_THAT(Kozor({"info", "tree/set-1.vol"}).output,
              AllOf(HasSubstr("Files in set:  5\n"), Not(HasSubstr("  set-1.vol"))));
}

TEST_F(KozorVolumes, LeaveAForeignFileInThePlaceOfTheCatalogue) {
  folder.WriteFile("notes.vol.json", "{\"mine\": 1}");
  const Words words = {"backup", "notes.vol", "-C", "tree", "a.txt"};
  EXPECT_THAT(MustFail(words), HasSubstr("notes.vol.json: exists and isn't a catalogue"));
  EXPECT_EQ(folder.ReadFile("notes.vol.json").size(), 11U);
  EXPECT_FALSE(std::filesystem::exists(folder.Path("notes.vol")));
}

TEST_F(KozorVolumes, RefuseACatalogueWithATimeThatNoFileHas) {
  BackUp({}, "set.vol");
  ASSERT_EQ(Shell("sed -i 's/\"modified\": [0-9]*/\"modified\": 9000000000000000000/' "
                  "set.vol.json")
                .status,
            0);
  EXPECT_THAT(MustFail({"restore", "set.vol", "-d", "out"}), HasSubstr("the catalogue is damaged"));
}

TEST_F(KozorVolumes, HoldFilesWhoseNamesDifferInCaseAlone) {
  MakeTree(folder, "tree", {{"Z", 1}, {"sub/C.txt", 20}});
  BackUp({}, "set-#.vol");
  EXPECT_EQ(Restored("set-#.vol"), "");
  MustRun({"backup", "--force", "set-#.vol", "-C", "tree", "*.txt", "sub", "z", "Z", "big.bin"});
  EXPECT_EQ(Restored("set-#.vol"), "");
}

TEST_F(KozorVolumes, SayWhenFilesCantBeInOneSet) {
  EXPECT_THAT(MustFail({"backup", "set-#.vol", "-C", "tree/sub", "c.txt", "../z"}),
              HasSubstr("choose a base directory above them all"));
}

TEST_F(KozorVolumes, LoseOnlyTheFilesThatCantBePlaced) {
  folder.WriteFile("tree/old.txt", "new");
  MustRun({"backup", "set-#.vol", "-C", "tree", "a.txt", "big.bin", "old.txt", "sub", "z"});
  folder.WriteFile("out/old.txt", "old and read-only");
  fs::permissions(folder.Path("out/old.txt"), fs::perms::owner_read);
  fs::create_directories(folder.Path("out/a.txt"));
  folder.WriteFile("out/z", "hard");
  fs::create_hard_link(folder.Path("out/z"), folder.Path("elsewhere"));
  EXPECT_THAT(MustFail({"restore", "set-#.vol", "-d", "out"}),
              AllOf(HasSubstr("a.txt: a directory is in the way"),
                    HasSubstr("old.txt: a read-only file is in the way"),
                    HasSubstr("z: another file is in the way")));
  EXPECT_EQ(folder.ReadFile("out/old.txt").size(), 17U);
  EXPECT_EQ(folder.ReadFile("out/big.bin"), folder.ReadFile("tree/big.bin"));
  EXPECT_THAT(MustFail({"restore", "--force", "set-#.vol", "-d", "out"}), HasSubstr("a.txt: "));
  EXPECT_EQ(folder.ReadFile("out/old.txt").size(), 3U);
  EXPECT_EQ(folder.ReadFile("elsewhere").size(), 4U);
  // From a set that lacks a volume the complete files are restored, and nothing of the truncated
  // one.
  fs::remove_all(folder.Path("out"));
  MustRun(
      {"backup", "--force", "--volume-size", "50K", "set-#.vol", "-C", "tree", "a.txt", "big.bin"});
  fs::remove(folder.Path("set-2.vol"));
  EXPECT_THAT(MustFail({"restore", "set-#.vol", "-d", "out"}), HasSubstr("volume 2 is needed"));
  EXPECT_THAT(folder.List("out"), ElementsAre("a.txt"));
}

TEST_F(KozorVolumes, StayInsideTheDestination) {
  BackUp({}, "set-#.vol");
  fs::create_directory(folder.Path("elsewhere"));
  fs::create_directory(folder.Path("out"));
  fs::create_symlink("../elsewhere", folder.Path("out/sub"));
  EXPECT_THAT(MustFail({"restore", "set-#.vol", "-d", "out"}),
              HasSubstr("sub/c.txt: refused: the link"));
  EXPECT_TRUE(fs::is_empty(folder.Path("elsewhere")));
  EXPECT_TRUE(folder.Exists("out/z"));
}

}  // namespace
}  // namespace kozor::test
