// Packing.cpp - see Packing.h.
#include "Packing.h"

#include <cstdlib>
#include <regex>
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
  throw UsageError("--method: lh0, lh1, lh5, lh6 or lh7, not " + Visible(name));
}

// The switches that the user has set.  Throws Failure if the archiver doesn't know one.
std::string OwnSwitches() {
  const char* const value = std::getenv(kVariable);
  if (value == nullptr) return "";
  static const std::regex known("-o[1567]|-z1|-ol[1-9]|-j[1-9][0-9]{0,2}|-unix");
  std::istringstream words(value);
  for (std::string word; words >> word;) {
    if (std::regex_match(word, known)) continue;
    throw Failure(std::string(kVariable) + ": the archiver knows no switch " + Visible(word) +
                  " (-o1, -o5, -o6, -o7, -z1, -ol1 to -ol9, -j1 to -j999, -unix)");
  }
  return value;
}

}  // namespace

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
  SetEnvironment(kVariable, switches);
}

}  // namespace kozor::program
