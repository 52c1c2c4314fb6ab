// VolumeFuzz.cpp - any bytes as a set of two volumes: restoring terminates and writes nothing
// outside the destination.
//
// Input: where the first volume ends (2 bytes), both volumes.
#include "ZorMultiVolume.h"
#include "fuzz/Fuzz.h"

namespace kozor::fuzz {
namespace {

const ScratchFolder& Folder() {
  static const ScratchFolder folder;
  return folder;
}

class Volumes : public ZorMultiVolume {
 protected:
  // Gives up if a volume is asked for a second time, or if the header states many files.
  int OnAbort(const ONABORTPARAM& param) override {
    return param.volumeResult != VolumeFirstAsk || param.volume > 2 || param.filesDone > 50;
  }
  // The application is responsible for names that lead elsewhere.
  CString OnMakeFileName(const char* destination, const char* name) override {
    const std::string text(name);
    const bool isPlain = !text.empty() && text.find_first_of("\\/:") == std::string::npos;
    return isPlain ? ZorMultiVolume::OnMakeFileName(destination, name) : CString();
  }
  CString OnMakeVolumeName(int number) override {
    return Folder().LibraryPath(std::to_string(number)).c_str();
  }
};

}  // namespace

void TestInput(Input input) {
  const std::size_t cut = input.Word();
  const auto bytes = input.Rest();
  const std::size_t first = std::min(cut, bytes.size());
  Folder().Write("1", bytes.first(first));
  Folder().Write("2", bytes.subspan(first));
  std::filesystem::remove_all(Folder().Path("target"));

  Volumes volumes;
  const int result = volumes.Restore(nullptr, Folder().LibraryPath("target\\").c_str());
  Require(result == (volumes.GetError() == ZorErrorNone ? 1 : 0));
  std::size_t entries = 0;
  for (const auto& entry : std::filesystem::directory_iterator(Folder().Path("."))) {
    const std::string name = entry.path().filename().string();
    Require(name == "1" || name == "2" || name == "target");
    ++entries;
  }
  Require(entries <= 3);
}

}  // namespace kozor::fuzz
