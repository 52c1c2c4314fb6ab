// Delivery.h - puts the files of an archive or a backup set in their places.  It handles names that
// lead elsewhere, and existing files.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "Arguments.h"
#include "Destination.h"

namespace kozor::program {

// A file to be delivered, as the archive or the set describes it.
struct Item {
  std::string name;        // library name
  std::uint64_t size = 0;  // bytes
  std::int64_t time = 0;   // last write, seconds since 1970
};

struct DeliveryRules {
  enum class Existing { Ask, Stays, StaysIfNewer, IsReplaced };
  Existing existing = Existing::Ask;
  Destination::Links links = Destination::Links::StayInside;
  bool absoluteNames = false;  // absolute names stay absolute
  const char* hint = "";       // about files whose names can't be made
};

// The options that set the rules, for the commands that deliver files.
inline constexpr std::array<Option, 7> kDeliveryOptions = {{
    {"-d", "DIRECTORY", "write files below DIRECTORY (default: the current\ndirectory)"},
    kExcludeOption,
    {"--force", "", "replace existing files without asking"},
    {"--keep-existing", "", "keep existing files"},
    {"--keep-newer", "", "keep existing files that are newer, replace others"},
    {"--allow-outside", "",
     "create symbolic links that lead out of DIRECTORY, and\nwrite through existing ones"},
    {"--absolute-names", "", "write absolute names to where they point, not below\nDIRECTORY"},
}};
// A description of them for the help.
inline constexpr std::string_view kDeliveryHelp =
    R"(A different file that already exists is replaced only if you agree: on a
terminal the program asks; elsewhere the file is kept and named, and the exit
status is 1 (see --force, --keep-existing and --keep-newer).  A file takes its
place only when it is complete.

Nothing is written outside of DIRECTORY: absolute names are taken relative to
it, and what would pass through or become a symbolic link that leads out of it
is refused.  Files that are refused or damaged are named, all others are
written, and the exit status is 1.
)";
DeliveryRules ReadDeliveryRules(const Arguments& arguments);

// Where a file goes.
struct Order {
  std::filesystem::path path;
  Place place;
  Destination::FinalLink finalLink = Destination::FinalLink::IsFollowed;
  bool mayReplace = false;  // an existing file
};

// For each file: call Begin or Wants, create the file in Work() under any name, and call Deliver.
// All of these throw FileFailure if the file can't be delivered.
class Delivery {
 public:
  Delivery(const std::filesystem::path& directory, const DeliveryRules& deliveryRules)
      : rules(deliveryRules), destination(directory, deliveryRules.links) {}

  // Begins with a file of which only the name is known.
  Order Begin(const std::string& name);
  // The same with all that is known.  Empty if an existing file stays and so this one needn't be
  // created.
  std::optional<Order> Wants(const Item& item) {
    return Wants(item, Destination::FinalLink::IsFollowed);
  }
  WorkFolder& Work() { return destination.Work(); }
  // The free space in bytes where Work() is.
  std::uint64_t FreeBytes() { return destination.FreeBytes(); }
  // Moves the file to its place.  If a different existing file stays there, removes the new one.
  void Deliver(const Item& item, const std::string& workName, Order& order);

  // Folders and links get their metadata here: permission bits, unless they are 0, and the
  // last-write time in 100 ns since 1601.
  void MakeFolder(const std::string& name);
  void FinishFolder(const std::string& name, unsigned int mode, std::uint64_t lastWrite);
  void MakeLink(const Item& item, const std::string& target, std::uint64_t lastWrite);

 private:
  std::optional<Order> Wants(const Item& item, Destination::FinalLink finalLink);
  enum class Verdict { Replace, Keep, Compare, Rename };
  std::filesystem::path PathOf(const std::string& name);
  void RequireNoTwin(const std::filesystem::path& path);
  Verdict Judge(const Item& item, const Occupant& occupant, bool known, Order& order);
  Verdict Ask(const Item& item, const Occupant& occupant, Order& order);

  DeliveryRules rules;
  Destination destination;
  bool rootTakenOff = false;  // already reported
  // The names delivered so far, by themselves in upper case; kept where case is ignored.
  std::map<std::u16string, std::string> delivered;
};

}  // namespace kozor::program
