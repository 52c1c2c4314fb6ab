// SourceList.h - what a line of the archiver adds besides the files of one library selection.
//
// The library adds the files of one ZorFind: from one base directory, without folders and links.
// The rest in lines of its own would be further changes of the archive, and a run that stops
// between them would leave a part.  So the program lists the rest in a file, and the archiver adds
// it in the library's line.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "WorkFolder.h"

namespace kozor::program {

// A list of names, one a line, for the next line of the archiver.  It is in a file in a work folder
// of its own, and valid while this object exists.  All calls throw Failure.
class NameList {
 public:
  // `directory` is the host path of the directory for the work folder.
  explicit NameList(std::filesystem::path directory);
  void Add(std::string_view lines);
  // Completes the file and makes it part of the line.
  void Pass();

 private:
  void Write();

  const std::filesystem::path parent;
  std::optional<WorkFolder> folder;
  Descriptor file;
  std::string waiting;  // to be written
};

class SourceList {
 public:
  // Names, relative to the base directory `base`, which is a library path.
  void Add(const std::string& base, const std::vector<std::string>& names);
  // The contents of the folders have to be added before.  Then programs that extract members in
  // order set a folder's mode and time last.
  void AddFolders(const std::string& base, std::vector<std::string> names);

  // Makes the list, if there is one, part of the next line that adds files.  `workDirectory` is the
  // library path of the line's work directory, which has to outlive the result.  Throws Failure.
  [[nodiscard]] std::unique_ptr<NameList> Pass(const std::string& workDirectory) const;

 private:
  void SetBase(const std::string& base);

  std::string text;
  std::string lastBase;
};

// Runs a line that adds only what the passed list names, for a list without files.  `archive` and
// `workDirectory` are library paths, `name` is the archive as the user gave it.  Throws Failure,
// and Interrupted after a signal.
void AddListOnly(const std::string& archive, const std::string& workDirectory,
                 const std::string& name);

}  // namespace kozor::program
