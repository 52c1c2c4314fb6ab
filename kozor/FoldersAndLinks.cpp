// FoldersAndLinks.cpp - see FoldersAndLinks.h.
#include "FoldersAndLinks.h"

#include <algorithm>
#include <fstream>
#include <functional>
#include <memory>
#include <type_traits>
#include <vector>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "WorkFolder.h"
#include "ZorError.h"
#include "platform/win32/Win32.h"

namespace kozor::program {

namespace {

struct Unload {
  void operator()(HMODULE module) const { FreeLibrary(module); }
};
using Module = std::unique_ptr<std::remove_pointer_t<HMODULE>, Unload>;

// Runs a command line of the archiver; 0 for success.
int RunArchiver(const std::string& line) {
  using Entry = int(WINAPI*)(HWND window, const char* line, char* output, std::uint32_t size);
  const Module module(LoadLibraryA("UNLHA32.DLL"));
  const auto entry = module ? GetProcAddress(module.get(), "Unlha") : nullptr;
  const auto run = reinterpret_cast<Entry>(reinterpret_cast<void (*)()>(entry));
  if (run == nullptr) throw Failure(std::string(ErrorText(ZorErrorEngineUnavailable)));
  return run(nullptr, line.c_str(), nullptr, 0);
}

}  // namespace

void AddFoldersAndLinks(const FileGroup& group, const Output& output, const std::string& name) {
  if (group.folders.empty() && group.links.empty()) return;
  // The contents of a folder come before the folder: then programs that extract members in order
  // set a folder's mode and time last.
  std::vector<std::string> folders = group.folders;
  std::sort(folders.begin(), folders.end(), std::greater());
  const TemporaryFolder temporary;
  const std::filesystem::path list = temporary.Path() / "names";
  std::ofstream names(list, std::ios::binary);
  for (const std::string& link : group.links) names << '"' << link << "\"\n";
  for (const std::string& folder : folders) names << '"' << folder << "\\\"\n";
  names.close();
  if (!names) throw Failure(Visible(list.string()) + ": can't be written");

  const std::string separator = group.base.ends_with('\\') ? "" : "\\";
  const int code =
      RunArchiver("a \"-w" + output.WorkDirectory() + "\" \"" + output.Path() + "\" \"" +
                  group.base + separator + "\" \"@" + LibraryPath(list) + '"');
  StopIfAsked();
  if (code == 0) return;
  const auto error = static_cast<ZorError>(code - 0x8000);  // the library's numbering
  throw Failure(Visible(name) + ": folders and links: " + std::string(ErrorText(error)));
}

}  // namespace kozor::program
