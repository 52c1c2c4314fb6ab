// Volumes.cpp - see Volumes.h.
#include "Volumes.h"

#include <algorithm>
#include <charconv>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "HostFiles.h"

namespace kozor::program {

namespace fs = std::filesystem;

namespace {

// More than anyone has; a larger number in a name is no volume's.
constexpr int kMostVolumes = 65'535;

}  // namespace

std::string ReasonText(int volumeResult) {
  switch (volumeResult) {
    case ZorMultiVolume::VolumeNoSpace:
      return "there is no disk, or too little free space on it";
    case ZorMultiVolume::VolumeNoDirectory:
      return "its directory can't be created";
    case ZorMultiVolume::VolumeNoCreate:
      return "the file can't be created";
    case ZorMultiVolume::VolumeNoOpen:
      return "the file can't be opened, or is too short for a volume";
    case ZorMultiVolume::VolumeBadIdentity:
      return "it isn't a volume, or belongs to another set";
    case ZorMultiVolume::VolumeWrongNumber:
      return "it is another volume of the set";
    default:
      return "";
  }
}

VolumeName::VolumeName(const std::string& pathOrPattern) : word(pathOrPattern) {
  const fs::path path = AbsolutePath(word);
  const std::string file = path.filename().string();
  const std::size_t mark = file.find('#');
  pattern = mark != std::string::npos;
  directory = path.parent_path();
  before = file.substr(0, mark);
  if (pattern) behind = file.substr(mark + 1);
}

fs::path VolumeName::Path(int volumeNumber) const {
  return directory / FromUtf8(before + (pattern ? std::to_string(volumeNumber) : "") + behind);
}

std::string VolumeName::NumberIn(const std::string& file) const {
  if (!pattern || file.size() <= before.size() + behind.size()) return "";
  const std::size_t digits = file.size() - before.size() - behind.size();
  const std::string number = file.substr(before.size(), digits);
  const bool isNumber = number.find_first_not_of("0123456789") == std::string::npos;
  return isNumber ? number : "";
}

bool VolumeName::Means(const fs::path& path) const {
  const std::string file = Shown(path.filename());
  const std::string number = NumberIn(file);
  if (pattern && number.empty()) return false;
  const std::string own = before + number + behind;
  if (file.size() != own.size() || CString(file.c_str()).CompareNoCase(own.c_str()) != 0) {
    return false;
  }
  if (file == own && path.parent_path() == directory) return true;
  // The same file by another name: through a link, or in another case where that is one file.
  const fs::path there = directory / FromUtf8(own);
  return Exists(there) && Inspect(path).identity.IsSame(Inspect(there).identity);
}

int VolumeName::LastNumber() const {
  int last = 0;
  const Descriptor opened = OpenDirectory(directory);
  if (!opened.IsOpen()) return last;
  for (const std::string& file : NamesIn(opened.Number())) {
    const std::string text = NumberIn(file);
    if (text.empty() || !Means(directory / FromUtf8(file))) continue;
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    last = std::max(last, std::min(number, kMostVolumes));
  }
  return last;
}

void Volumes::Require(int succeeded) const {
  if (succeeded) return;
  StopIfAsked();
  if (!whyStopped.empty()) throw Failure(whyStopped);
  const std::string at = currentName.empty() ? "" : VisibleLibraryName(currentName) + ": ";
  throw Failure(Visible(volumeName.Word()) + ": " + at + std::string(ErrorText(GetError())));
}

CString Volumes::OnMakeVolumeName(int volumeNumber) {
  return LibraryPath(volumeName.Path(volumeNumber)).c_str();
}

std::string Volumes::ObjectionTo(const ONABORTPARAM& /*param*/) {
  return "";
}

int Volumes::OnAbort(const ONABORTPARAM& param) {
  if (param.phase == PhaseEnd) {
    HideProgress();
    return 0;
  }
  if (StopSignal() != 0) return 1;
  if (param.phase == PhaseVolume) return Ready(param) ? 0 : 1;
  if (param.kind == 0 && param.fileName != nullptr) currentName = param.fileName;
  if (param.phase == PhaseFileBegin || param.phase == PhaseFileRunning) {
    progress.Running(param.bytesDone, currentName);
  } else if (param.phase == PhaseFileEnd) {
    progress.FileEnds(param.bytesTotal);
    Mention(currentName);
  }
  return 0;
}

// The first volume is used without asking, as is every volume with its own name.  For others the
// user has to change the medium.
bool Volumes::Ready(const ONABORTPARAM& param) {
  const bool asItStands =
      param.volumeResult == VolumeFirstAsk && (param.volume == 0 || volumeName.IsPattern());
  std::string objection = asItStands ? ObjectionTo(param) : ReasonText(param.volumeResult);
  if (asItStands && objection.empty()) return true;
  const int number = param.volume + 1;
  const std::string path = Visible(volumeName.Path(number).string()) + ": ";
  if (asItStands && volumeName.IsPattern()) {
    whyStopped = path + objection;
    return false;
  }
  const std::string wanted = path + "volume " + std::to_string(number) + " is needed";
  do {
    whyStopped = wanted + (objection.empty() ? "" : ", but " + objection);
    if (volumeName.IsPattern()) return false;
    if (!InputIsTerminal()) {
      whyStopped += ", and there is no terminal to ask on";
      return false;
    }
    std::string answer;
    if (!AskUser(whyStopped + ".\nInsert its medium and press Enter, or q and Enter to quit:",
                 answer) ||
        answer.starts_with('q') || answer.starts_with('Q')) {
      return false;
    }
    objection = ObjectionTo(param);
  } while (!objection.empty());
  whyStopped.clear();
  return true;
}

}  // namespace kozor::program
