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

// Throws if a component can't be a file name or is "..".
void RequireSound(const std::string& name, const char* hint) {
  const auto refuse = [&] {
    throw FileFailure(std::string("refused: not a valid file name") + hint);
  };
  for (std::size_t start = 0; start <= name.size();) {
    const std::size_t end = std::min(name.find('\\', start), name.size());
    const std::string part = name.substr(start, end - start);
    if (part == "." || part == "..") {
      throw FileFailure("refused: the name contains . or .. as a component");
    }
    if (!CanBeMade(part)) refuse();
    start = end + 1;
  }
  const bool control = std::any_of(name.begin(), name.end(),
                                   [](char c) { return static_cast<unsigned char>(c) < 0x20; });
  if (control || name.find_first_of("\"*/:<>?|") != std::string::npos) refuse();
}

}  // namespace

DeliveryRules ReadDeliveryRules(const Arguments& arguments) {
  DeliveryRules rules;
  arguments.Exclude("--force", {"--keep-existing", "--keep-newer"});
  arguments.Exclude("--keep-existing", {"--keep-newer"});
  if (arguments.Has("--force")) rules.existing = DeliveryRules::Existing::IsReplaced;
  if (arguments.Has("--keep-existing")) rules.existing = DeliveryRules::Existing::Stays;
  if (arguments.Has("--keep-newer")) rules.existing = DeliveryRules::Existing::StaysIfNewer;
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
  if (rest.empty()) throw FileFailure("refused: the name is empty");
  RequireSound(rest, rules.hint);
  if (rooted && rules.absoluteNames) {
    const bool onHost = !hasDrive && !name.starts_with("\\\\");
    return AbsolutePath(onHost ? "/" / HostName(rest) : HostPath(name));
  }
  if (rooted && !rootTakenOff) {
    Remark(
        "absolute names are written below the destination (--absolute-names writes them to where "
        "they point)");
    rootTakenOff = true;
  }
  return HostName(rest);
}

Order Delivery::Begin(const std::string& name) {
  Order order{.path = PathOf(name), .place = {}};
  order.place = destination.Find(order.path, order.finalLink);
  return order;
}

std::optional<Order> Delivery::Wants(const Item& item, Destination::FinalLink finalLink) {
  Order order{.path = PathOf(item.name), .place = {}, .finalLink = finalLink};
  order.place = destination.FindNew(order.path, finalLink);
  while (order.place.occupant) {
    switch (Judge(item, *order.place.occupant, false, order)) {
      case Verdict::Replace:
        order.mayReplace = true;
        return order;
      case Verdict::Keep:
        return std::nullopt;
      case Verdict::Compare:
        return order;
      case Verdict::Rename:
        order.place = destination.Find(order.path, finalLink);
        break;
    }
  }
  return order;
}

// Where case is ignored, only the first of the names that differ only in case gets the place.
void Delivery::RequireNoTwin(const fs::path& path) {
  if (!Work().IgnoresCase()) return;
  const std::string own = path.generic_string();
  const std::string& first = delivered.try_emplace(text::UpperKey(own), own).first->second;
  if (first != own) {
    throw FileFailure("refused: the name differs from " + Visible(first) + " only in case");
  }
}

void Delivery::Deliver(const Item& item, const std::string& workName, Order& order) {
  RequireNoTwin(order.path);
  for (;;) {
    const auto existing =
        order.mayReplace ? Destination::Existing::IsReplaced : Destination::Existing::Stays;
    if (destination.MoveIn(workName, order.place, existing)) return;
    const auto lookAgain = [&] { order.place = destination.Find(order.path, order.finalLink); };
    lookAgain();
    if (!order.place.occupant) continue;
    const Occupant& occupant = *order.place.occupant;
    const Verdict verdict =
        !occupant.isDirectory && destination.HasContentsOf(workName, order.place)
            ? Verdict::Replace
            : Judge(item, occupant, true, order);
    if (verdict == Verdict::Keep) return Work().Remove(workName);
    if (verdict == Verdict::Rename) lookAgain();
    order.mayReplace = verdict == Verdict::Replace;
  }
}

// `known`: the contents have been compared and differ.
Delivery::Verdict Delivery::Judge(const Item& item, const Occupant& occupant, bool known,
                                  Order& order) {
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
  if (CanAsk()) return Ask(item, occupant, order);
  throw FileFailure(std::string(occupant.isReadOnly ? "a read-only file" : "another file") +
                    " is in the way and was kept (--force replaces it)");
}

Delivery::Verdict Delivery::Ask(const Item& item, const Occupant& occupant, Order& order) {
  const std::string question =
      Visible(order.path.string()) + " exists: " + std::to_string(occupant.size) + " bytes, " +
      TimeText(occupant.time) + (occupant.isReadOnly ? ", read-only" : "") + ".\nReplace it with " +
      std::to_string(item.size) + " bytes, " + TimeText(item.time) +
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
        if (!AskUser("New name (in the same directory):", answer)) break;
        if (answer.empty() || answer == "." || answer == ".." ||
            answer.find('/') != std::string::npos) {
          break;
        }
        order.path.replace_filename(FromUtf8(answer));
        return Verdict::Rename;
      }
      case 'q':
        throw Failure("stopped before " + Visible(order.path.string()));
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
  std::optional<Order> order = Wants(item, Destination::FinalLink::IsMeant);
  if (!order) return;
  const std::string workName = "link";
  Work().Remove(workName);
  destination.PrepareLink(workName, order->place, target, lastWrite);
  Deliver(item, workName, *order);
}

}  // namespace kozor::program
