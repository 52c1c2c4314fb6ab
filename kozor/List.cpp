// List.cpp - kozor list: what an archive holds.
#include <array>
#include <cstdio>
#include <unordered_set>

#include "Archive.h"
#include "Commands.h"
#include "Console.h"
#include "EntryLine.h"
#include "Host.h"
#include "Mask.h"
#include "StandardStreams.h"

namespace kozor::program {

namespace {

constexpr std::string_view kHelp =
    R"(Usage: kozor list ARCHIVE [MASK...]

Lists the members of an LZH archive: size in bytes, last change, attributes
(r read-only, h hidden, s system, a archive), and name.  Control characters in
names appear as \xNN.  A MASK selects as in "kozor extract".
)";

// "2026-02-03 04:05:06", and hyphens for a month or day that doesn't exist.
std::string TimeText(unsigned int date, unsigned int time) {
  const unsigned int day = date & 31U;
  const unsigned int month = date >> 5U & 15U;
  if (day == 0 || month == 0 || month > 12) return "-------------------";
  constexpr unsigned int kFirstYear = 1980;
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%04u-%02u-%02u %02u:%02u:%02u",
                kFirstYear + (date >> 9U), month, day, time >> 11U, time >> 5U & 63U,
                (time & 31U) * 2);
  return text.data();
}

class Listing {
 public:
  // Prints a member, but for one that an earlier mask has selected as well.
  void Add(const Member& member) {
    if (!seen.insert(member.name).second) return;
    bytes += member.size;
    PrintLine(
        EntryLine(member.size, TimeText(member.date, member.time), member.attribute, member.name));
  }

  void PrintTotal() const {
    PrintLine(std::to_string(bytes) + " bytes in " + std::to_string(seen.size()) +
              (seen.size() == 1 ? " file" : " files"));
  }

 private:
  std::unordered_set<std::string> seen;
  std::uint64_t bytes = 0;
};

void List(const Arguments& arguments) {
  const std::string& name = arguments.Operand(0, "the archive");
  const std::string archive = LibraryPath(name);
  RequireArchive(archive, name);
  std::vector<std::string> words = arguments.OperandsFrom(1);
  if (words.empty()) words = {"*.*"};
  Listing listing;
  const auto print = [&](const Member& member) { listing.Add(member); };
  for (const std::string& word : words) {
    std::size_t found = ForEachMember(archive, name, MemberMask(word), print);
    if (found == 0 && !HasWildcards(word)) {
      found = ForEachMember(archive, name, MemberMask(word + "/"), print);
    }
    if (found == 0) Complain(Visible(word) + ": no such member in " + Visible(name));
  }
  listing.PrintTotal();
}

}  // namespace

const Command kListCommand = {"list", "list the members of an archive", kHelp, {}, List};

}  // namespace kozor::program
