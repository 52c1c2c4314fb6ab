// Packing.cpp - see Packing.h.
#include "Packing.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdlib>
#include <sstream>
#include <string>

#include "Console.h"
#include "Failure.h"
#include "Host.h"

namespace kozor::program {

namespace {

constexpr const char* kVariable = "KOZOR_ARCHIVER";

struct Method {
  std::string_view name;
  std::string_view archiverSwitch;
  bool hasLevels;
};
constexpr std::array<Method, 5> kMethods = {{
    {"lh0", "-z1", false},
    {"lh1", "-o1", false},
    {"lh5", "-o5", true},
    {"lh6", "-o6", true},
    {"lh7", "-o7", true},
}};

const Method& FindMethod(const std::string& name) {
  for (const Method& method : kMethods) {
    if (name == method.name) return method;
  }
  throw UsageError("--method must be lh0, lh1, lh5, lh6 or lh7, not " + Visible(name));
}

// Whether a word is `prefix` and a number from 1 to `most`, without zeros before it.
bool IsNumbered(std::string_view word, std::string_view prefix, unsigned most) {
  if (!word.starts_with(prefix) || word.substr(prefix.size()).starts_with('0')) return false;
  unsigned number = 0;
  const char* const end = word.data() + word.size();
  const auto [stop, error] = std::from_chars(word.data() + prefix.size(), end, number);
  return error == std::errc() && stop == end && number <= most;
}

bool IsKnownSwitch(std::string_view word) {
  const auto isWord = [word](const Method& method) { return word == method.archiverSwitch; };
  return std::any_of(kMethods.begin(), kMethods.end(), isWord) || word == "-unix" ||
         IsNumbered(word, "-ol", 9) || IsNumbered(word, "-j", 999);
}

// The switches that the user has set.  Throws Failure if the archiver doesn't know one.
std::string OwnSwitches() {
  const char* const value = std::getenv(kVariable);
  if (value == nullptr) return "";
  std::istringstream words(value);
  for (std::string word; words >> word;) {
    if (IsKnownSwitch(word)) continue;
    throw Failure(std::string(kVariable) + ": unknown switch " + Visible(word) +
                  " (-o1, -o5, -o6, -o7, -z1, -ol1 to -ol9, -j1 to -j999, -unix)");
  }
  return value;
}

// The full name of the system of --for, or of this one: "linux-x64".  Without a processor it is
// this one, or the usual one of the other system.
std::string ProgramSystem(const Arguments& arguments) {
  const std::string_view own = KOZOR_OWN_SYSTEM;
  const std::string given = arguments.Value("--for", own);
  const bool isOwn = own.starts_with(given + '-');
  const std::string usual = given == "linux" || given == "windows" ? given + "-x64" : given;
  const std::string name = isOwn ? std::string(own) : usual;
  std::istringstream systems(KOZOR_SFX_SYSTEMS);
  for (std::string system; systems >> system;) {
    if (system == name) return system;
  }
  const bool makesAny = *KOZOR_SFX_SYSTEMS != '\0';
  throw UsageError("--sfx: this build makes no self-extracting programs for " +
                   (given.empty() ? "this system" : Visible(given)) +
                   (makesAny ? ", but for " KOZOR_SFX_SYSTEMS : ""));
}

}  // namespace

std::string ProgramSuffix(const Arguments& arguments) {
  return ProgramSystem(arguments).starts_with("windows") ? ".exe" : ".run";
}

bool KeepsUnixFacts(const Arguments& arguments) {
  return !arguments.Has("--no-unix") && !arguments.Has("--sfx");
}

void SetUpPacking(const Arguments& arguments) {
  arguments.Exclude("--unix", {"--no-unix"});
  std::string switches = OwnSwitches();
  if (arguments.Has("--method")) {
    const Method& method = FindMethod(arguments.Value("--method"));
    if (!method.hasLevels && arguments.Has("--level")) {
      throw UsageError("--level: " + std::string(method.name) + " has no levels");
    }
    switches += ' ' + std::string(method.archiverSwitch);
  }
  const int level = arguments.Number("--level", 1, 9, 0);
  if (level > 0) switches += " -ol" + std::to_string(level);
  const int threads = arguments.Number("--threads", 1, 999, 0);
  if (threads > 0) switches += " -j" + std::to_string(threads);
  if (KeepsUnixFacts(arguments)) switches += " -unix";
  if (arguments.Has("--sfx")) switches += " -gfor=" + ProgramSystem(arguments);
  SetEnvironment(kVariable, switches);
}

void AddPackingSwitch(const std::string& word) {
  const char* const switches = std::getenv(kVariable);
  SetEnvironment(kVariable, (switches != nullptr ? switches : "") + (' ' + word));
}

}  // namespace kozor::program
