// Delivery.cpp - see Delivery.h.
#include "Delivery.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "Listing.h"
#include "platform/text/Case.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

bool BeginsWithDrive(const std::string& name) {
  return name.size() >= 2 && name[1] == ':' && std::isalpha(static_cast<unsigned char>(name[0]));
}

constexpr const char* kNoSuchName =
    "refused: no file can have this name (kozor print shows the contents)";

// Throws if a component can't be a file name or is "..".
void RequireSound(const std::string& name) {
  for (std::size_t start = 0; start <= name.size();) {
    const std::size_t end = std::min(name.find('\\', start), name.size());
    const std::string part = name.substr(start, end - start);
    if (part == "." || part == "..") {
      throw FileFailure("refused: its name climbs out of folders");
    }
    if (!CanBeMade(part)) throw FileFailure(kNoSuchName);
    start = end + 1;
  }
  const bool control = std::any_of(name.begin(), name.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  if (control || name.find_first_of("\"*/:<>?|") != std::string::npos) {
    throw FileFailure(kNoSuchName);
  }
}

}  // namespace

DeliveryRules ReadDeliveryRules(const Arguments& arguments) {
  DeliveryRules rules;
  const std::array<std::pair<const char*, DeliveryRules::Existing>, 3> existing = {
      {{"--force", DeliveryRules::Existing::IsReplaced},
       {"--keep-existing", DeliveryRules::Existing::Stays},
       {"--keep-newer", DeliveryRules::Existing::StaysIfNewer}}};
  const char* given = nullptr;
  for (const auto& [option, rule] : existing) {
    if (!arguments.Has(option)) continue;
    if (given != nullptr) {
      throw UsageError(std::string(given) + " and " + option + " exclude each other");
    }
    given = option;
    rules.existing = rule;
  }
  if (arguments.Has("--allow-outside")) rules.links = Destination::Links::MayLeadOut;
  rules.absoluteNames = arguments.Has("--absolute-names");
  return rules;
}

// The path relative to the destination, or the absolute path if the name is absolute and the rules
// allow it.
fs::path Delivery::PathOf(const std::string& name) {
  const bool hasDrive = BeginsWithDrive(name);
  const bool rooted = hasDrive || name.starts_with('\\');
  std::string rest = name.substr(hasDrive ? 2 : 0);
  rest.erase(0, rest.find_first_not_of('\\'));
  while (rest.ends_with('\\')) rest.pop_back();
  if (rest.empty()) throw FileFailure("refused: it has no name");
  RequireSound(rest);
  if (rooted && rules.absoluteNames) {
    const bool onHost = !hasDrive && !name.starts_with("\\\\");
    return AbsolutePath(onHost ? "/" / HostName(rest) : HostPath(name));
  }
  if (rooted && !rootTakenOff) {
    Remark(
        "names that begin at the root are taken from the destination on "
        "(--absolute-names takes them as they are)");
    rootTakenOff = true;
  }
  return HostName(rest);
}

void Delivery::Begin(const std::string& name) {
  mayReplace = false;
  finalLink = Destination::FinalLink::IsFollowed;
  path = PathOf(name);
  place = destination.Find(path, finalLink);
}

bool Delivery::Wants(const Item& item, Destination::FinalLink itsFinalLink) {
  mayReplace = false;
  finalLink = itsFinalLink;
  path = PathOf(item.name);
  for (;;) {
    place = destination.Find(path, finalLink);
    if (!place.occupant) return true;
    switch (Judge(item, *place.occupant, false)) {
      case Verdict::Replace:
        mayReplace = true;
        return true;
      case Verdict::Keep:
        return false;
      case Verdict::Compare:
        return true;
      case Verdict::Rename:
        break;  // look at the new place
    }
  }
}

// If the host ignores case, only the first of the names that differ only in case gets the place.
void Delivery::RequireNoTwin() {
  if (!HostIgnoresCase()) return;
  const std::string own = path.generic_string();
  const std::string& first = delivered.try_emplace(text::UpperKey(own), own).first->second;
  if (first != own) {
    throw FileFailure("refused: its name differs from that of " + Visible(first) +
                      " in case alone");
  }
}

void Delivery::Deliver(const Item& item, const std::string& workName) {
  RequireNoTwin();
  for (;;) {
    const auto existing =
        mayReplace ? Destination::Existing::IsReplaced : Destination::Existing::Stays;
    if (destination.MoveIn(workName, place, existing)) return;
    place = destination.Find(path, finalLink);
    if (!place.occupant) continue;
    const Occupant& occupant = *place.occupant;
    const Verdict verdict = !occupant.isDirectory && destination.HasContentsOf(workName, place)
                                ? Verdict::Replace
                                : Judge(item, occupant, true);
    if (verdict == Verdict::Keep) return Work().Remove(workName);
    if (verdict == Verdict::Rename) place = destination.Find(path, finalLink);
    mayReplace = verdict == Verdict::Replace;
  }
}

// `known`: the contents have been compared and differ.
Delivery::Verdict Delivery::Judge(const Item& item, const Occupant& occupant, bool known) {
  if (occupant.isDirectory) throw FileFailure("a directory is in the way");
  switch (rules.existing) {
    case DeliveryRules::Existing::IsReplaced:
      return Verdict::Replace;
    case DeliveryRules::Existing::Stays:
      return Verdict::Keep;
    case DeliveryRules::Existing::StaysIfNewer:
      return occupant.time > item.time ? Verdict::Keep : Verdict::Replace;
    case DeliveryRules::Existing::Ask:
      break;
  }
  const bool mayBeSame = occupant.isLink || (occupant.isFile && occupant.size == item.size);
  if (!known && mayBeSame) return Verdict::Compare;
  if (CanAsk()) return Ask(item, occupant);
  throw FileFailure(std::string(occupant.isReadOnly ? "a read-only file" : "another file") +
                    " is in the way and was kept (--force replaces it)");
}

Delivery::Verdict Delivery::Ask(const Item& item, const Occupant& occupant) {
  const std::string question =
      Visible(path.string()) + " exists: " + std::to_string(occupant.size) + " bytes of " +
      TimeText(occupant.time) + (occupant.isReadOnly ? ", read-only" : "") + ".\nReplace it by " +
      std::to_string(item.size) + " bytes of " + TimeText(item.time) +
      "? [y]es, [n]o, [a]ll, n[o]ne, [r]ename, [q]uit:";
  std::string answer;
  for (;;) {
    if (!AskUser(question, answer)) {
      StopIfAsked();
      answer = "q";
    }
    switch (answer.empty() ? ' ' : std::tolower(static_cast<unsigned char>(answer[0]))) {
      case 'y':
        return Verdict::Replace;
      case 'n':
        return Verdict::Keep;
      case 'a':
        rules.existing = DeliveryRules::Existing::IsReplaced;
        return Verdict::Replace;
      case 'o':
        rules.existing = DeliveryRules::Existing::Stays;
        return Verdict::Keep;
      case 'r': {
        if (!AskUser("New name, in the same folder:", answer)) break;
        if (answer.empty() || answer == "." || answer == ".." ||
            answer.find('/') != std::string::npos) {
          break;
        }
        path.replace_filename(FromUtf8(answer));
        return Verdict::Rename;
      }
      case 'q':
        throw Failure("stopped at " + Visible(path.string()) + ", as you asked");
      default:
        break;
    }
  }
}

void Delivery::MakeFolder(const std::string& name) {
  destination.MakeFolder(PathOf(name));
}

void Delivery::FinishFolder(const std::string& name, unsigned int mode, std::uint64_t lastWrite) {
  destination.FinishFolder(PathOf(name), mode, lastWrite);
}

void Delivery::MakeLink(const Item& item, const std::string& target, std::uint64_t lastWrite) {
  if (!Wants(item, Destination::FinalLink::IsMeant)) return;
  const std::string workName = "link";
  Work().Remove(workName);
  destination.PrepareLink(workName, place, target, lastWrite);
  Deliver(item, workName);
}

}  // namespace kozor::program
