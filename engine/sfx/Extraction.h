// Extraction.h - members of the archive become files and directories.
#pragma once

#include <string>
#include <vector>

#include "engine/container/MemberHeader.h"
#include "engine/sfx/Destination.h"
#include "engine/sfx/Entry.h"
#include "engine/sfx/Tally.h"

namespace kozor::sfx {

struct ExtractionRules {
  NewFile::Existing existing = NewFile::Existing::Stays;
  bool takesRooted = false;  // names that begin at the root are taken from the destination on
};

class Extraction {
 public:
  // All of these must outlive the object.
  Extraction(const ExtractionRules& given, Destination& target, Tally& counted)
      : rules(given), destination(target), tally(counted) {}

  // Tells what came of it, in words and in the tally.
  void Extract(const Entry& entry, const container::MemberHeader& header,
               container::ByteSpan packed);

  // Directories get their times last: every file that is made in them sets them anew.
  void SetDirectoryTimes();

 private:
  const char* WhyRefused(const Entry& entry) const;
  // These return why it failed, or an empty text.
  std::string TryToExtract(const Entry& entry, const container::MemberHeader& header,
                           container::ByteSpan packed);
  std::string ExtractFile(const Place& place, const Entry& entry,
                          const container::MemberHeader& header, container::ByteSpan packed) const;

  const ExtractionRules& rules;
  Destination& destination;
  Tally& tally;
  std::vector<Entry> directories;
};

}  // namespace kozor::sfx
