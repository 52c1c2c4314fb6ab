// Extraction.cpp - see Extraction.h.
#include "engine/sfx/Extraction.h"

#include "engine/sfx/Console.h"
#include "engine/sfx/System.h"
#include "engine/sfx/Unpacking.h"

namespace kozor::sfx {
namespace {

using container::ByteSpan;
using container::MemberHeader;

// Relative to the destination, without a trailing '/'.
std::string_view PathOf(const Entry& entry) {
  std::string_view path = entry.name;
  if (entry.IsRooted()) path.remove_prefix(1);
  if (entry.isDirectory) path.remove_suffix(1);
  return path;
}

}  // namespace

void Extraction::Extract(const Entry& entry, const MemberHeader& header, ByteSpan packed) {
  const std::string reason = TryToExtract(entry, header, packed);
  if (!reason.empty()) return tally.Fail(entry, reason);
  Say({Visible(entry.name)});
  tally.Count(entry, header);
}

void Extraction::SetDirectoryTimes() {
  for (std::size_t i = directories.size(); i-- != 0;) {
    Place place;
    if (destination.Find(PathOf(directories[i]), place) < 0) continue;
    host::SetFolderTime(place.directory, place.name, directories[i].time);
  }
}

const char* Extraction::WhyRefused(const Entry& entry) const {
  if (entry.name.empty()) return "not extracted";
  if (entry.isLink) return "not extracted: a symbolic link";
  if (entry.strays) return "not extracted: the name leads out of the directory";
  if (entry.IsRooted() && !rules.takesRooted) {
    return "not extracted: the name begins at the root directory (see -r)";
  }
  return nullptr;
}

std::string Extraction::TryToExtract(const Entry& entry, const MemberHeader& header,
                                     ByteSpan packed) {
  if (const char* refusal = WhyRefused(entry)) return refusal;
  Place place;
  if (const long error = destination.Find(PathOf(entry), place); error < 0)
    return host::Reason(error);
  if (!entry.isDirectory) return ExtractFile(place, entry, header, packed);
  if (const long error = MakeDirectory(place); error < 0) return host::Reason(error);
  directories.push_back(entry);
  return {};
}

std::string Extraction::ExtractFile(const Place& place, const Entry& entry,
                                    const MemberHeader& header, ByteSpan packed) const {
  constexpr const char* kNotOverwritten = "exists already, not overwritten (see -o)";
  const bool mayReplace = rules.existing == Existing::IsReplaced;
  if (!mayReplace && host::IsTaken(place.directory, place.name)) return kNotOverwritten;
  if (const char* fault = FaultOf(header)) return fault;
  NewFile file;
  const auto access = entry.isReadOnly ? Access::ReadOnly : Access::ReadWrite;
  long error = file.Create(place, header.originalBytes, access);
  if (error < 0) return host::Reason(error);
  if (const char* fault = UnpackInto(file.Contents(), header, packed)) return fault;
  error = file.Publish(entry.time, rules.existing);
  if (error == 0) return {};
  return !mayReplace && host::IsTaken(place.directory, place.name) ? kNotOverwritten
                                                                   : host::Reason(error);
}

}  // namespace kozor::sfx
