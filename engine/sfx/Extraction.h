// Extraction.h - extracts members to files and directories.
#pragma once

#include <string>
#include <vector>

#include "engine/container/MemberHeader.h"
#include "engine/sfx/Destination.h"
#include "engine/sfx/Entry.h"
#include "engine/sfx/Tally.h"

namespace kozor::sfx {

struct ExtractionRules {
  Existing existing = Existing::Stays;
  bool takesRooted = false;  // rooted names are taken relative to the destination
};

class Extraction {
 public:
  // All of these must outlive the object.
  Extraction(const ExtractionRules& given, Destination& target, Tally& counted)
      : rules(given), destination(target), tally(counted) {}

  // Reports the outcome and counts it in the tally.
  void Extract(const Entry& entry, const container::MemberHeader& header,
               container::ByteSpan packed);

  // To be called last: every file created in a directory changes its time.
  void SetDirectoryTimes();

 private:
  const char* WhyRefused(const Entry& entry) const;
  // Return the reason for a failure, or an empty text.
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
