// Program.cpp - the command line of a self-extracting program, and its three tasks.
#include "engine/sfx/Program.h"

#include <string>
#include <string_view>

#include "engine/container/ByteSource.h"
#include "engine/container/MemberWalker.h"
#include "engine/container/ProgramEnd.h"
#include "engine/sfx/Console.h"
#include "engine/sfx/Destination.h"
#include "engine/sfx/Entry.h"
#include "engine/sfx/Extraction.h"
#include "engine/sfx/System.h"
#include "engine/sfx/Tally.h"
#include "engine/sfx/Unpacking.h"

namespace kozor::sfx {
namespace {

using container::ByteSpan;
using container::MemberHeader;

constexpr std::string_view kHelp =
    R"([OPTION]... [DIRECTORY]

Extracts the LZH archive inside this program into DIRECTORY, by default the
current directory.  Keeps existing files, and writes nothing outside.

  -l        list the archive
  -t        test the archive: unpack everything, write nothing
  -o        overwrite existing files
  -r        extract absolute names below DIRECTORY; without this option they
            are left out
  --help    show this help

Exit status: 0 success, 1 something failed, 2 invalid command line.)";

enum class Task { Extract, List, Test, Help };

struct Options {
  Task task = Task::Extract;
  ExtractionRules rules;
  std::string_view directory = ".";
};

// Returns false after a message.
bool ReadOptions(std::span<const char* const> words, Options& options) {
  bool isOption = true;
  int directories = 0;
  for (const std::string_view word : words) {
    if (isOption && word == "--") {
      isOption = false;
    } else if (!isOption || !word.starts_with('-')) {
      options.directory = word;
      ++directories;
    } else if (word == "-l") {
      options.task = Task::List;
    } else if (word == "-t") {
      options.task = Task::Test;
    } else if (word == "-o") {
      options.rules.existing = Existing::IsReplaced;
    } else if (word == "-r") {
      options.rules.takesRooted = true;
    } else if (word == "--help") {
      options.task = Task::Help;
      return true;
    } else {
      Complain({"unknown option ", Visible(word), " (see --help)"});
      return false;
    }
  }
  if (directories > 1) Complain({"more than one directory (see --help)"});
  return directories <= 1;
}

void List(const Entry& entry, const MemberHeader& header, Tally& tally) {
  Say({Decimal(header.originalBytes, 12), "  ", TimeText(entry.time), "  ", Visible(entry.name)});
  tally.Count(entry, header);
}

void Test(const Entry& entry, const MemberHeader& header, ByteSpan packed, Tally& tally) {
  if (!entry.isDirectory) {
    if (const char* fault = TestData(header, packed)) return tally.Fail(entry, fault);
  }
  Say({"OK    ", Visible(entry.name)});
  tally.Count(entry, header);
}

// Calls `work` with each member's entry, header and packed data.  Returns false after a message if
// the archive is damaged.
template <typename Work>
bool ForEachMember(ByteSpan program, Work work) {
  container::MemorySource source(program);
  const std::uint64_t begin = container::EndOfProgram(source);
  if (begin == 0) {
    Complain({"the program contains no archive, or was cut short"});
    return false;
  }
  container::MemberWalker walker(source, begin);
  MemberHeader header;
  while (walker.Next(header)) {
    const std::uint64_t dataBegin = walker.HeaderOffset() + header.headerBytes;
    work(DescribeEntry(header), header,
         program.subspan(static_cast<std::size_t>(dataBegin),
                         static_cast<std::size_t>(header.packedBytes)));
  }
  if (walker.HasEndMark()) return true;
  Complain({"the archive is damaged or cut short here; the rest is lost"});
  return false;
}

bool ListAll(ByteSpan program, Tally& tally) {
  Say({"        size  time (UTC)           name"});
  return ForEachMember(program, [&](const Entry& entry, const MemberHeader& header, ByteSpan) {
    List(entry, header, tally);
  });
}

bool TestAll(ByteSpan program, Tally& tally) {
  return ForEachMember(program, [&](const Entry& entry, const MemberHeader& header,
                                    ByteSpan packed) { Test(entry, header, packed, tally); });
}

bool ExtractAll(ByteSpan program, const Options& options, Tally& tally) {
  Destination destination;
  if (const long error = destination.Open(options.directory); error < 0) {
    Complain({Visible(options.directory), ": ", host::Reason(error)});
    return false;
  }
  Extraction extraction(options.rules, destination, tally);
  const bool isWhole =
      ForEachMember(program, [&](const Entry& entry, const MemberHeader& header, ByteSpan packed) {
        extraction.Extract(entry, header, packed);
      });
  extraction.SetDirectoryTimes();
  return isWhole;
}

std::string Counted(std::uint64_t number, std::string_view one, std::string_view many) {
  return Join({Decimal(number), " ", number == 1 ? one : many});
}

bool Perform(const Options& options, ByteSpan program) {
  Tally tally;
  bool isWhole = false;
  std::string_view done;
  switch (options.task) {
    case Task::List:
      isWhole = ListAll(program, tally);
      done = "";
      break;
    case Task::Test:
      isWhole = TestAll(program, tally);
      done = " OK";
      break;
    default:
      isWhole = ExtractAll(program, options, tally);
      done = " extracted";
  }
  Say({Counted(tally.files, "file", "files"), ", ",
       Counted(tally.directories, "directory", "directories"), ", ",
       Counted(tally.bytes, "byte", "bytes"), done});
  if (tally.failures != 0) Complain({Decimal(tally.failures), " failed"});
  return isWhole && tally.failures == 0;
}

}  // namespace

int RunProgram(std::span<const char* const> words) {
  const std::string_view name =
      words.empty() ? std::string_view() : host::FileNameOf(words.front());
  if (!name.empty()) SetProgramName(name);

  Options options;
  if (!ReadOptions(words.subspan(words.empty() ? 0 : 1), options)) return 2;
  if (options.task == Task::Help) {
    Say({"Usage: ", Visible(name), " ", kHelp});
    return FlushOutput() ? 0 : 1;
  }
  std::string problem;
  const ByteSpan program = host::OwnFile(problem);
  if (program.empty()) Complain({"can't read the archive: ", problem});
  const bool isDone = !program.empty() && Perform(options, program);
  if (!FlushOutput()) {
    Complain({"can't write to standard output"});
    return 1;
  }
  return isDone ? 0 : 1;
}

}  // namespace kozor::sfx
