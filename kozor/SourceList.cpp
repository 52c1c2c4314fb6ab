// SourceList.cpp - see SourceList.h.
#include "SourceList.h"

#include <algorithm>
#include <functional>
#include <memory>
#include <type_traits>

#include "Console.h"
#include "Failure.h"
#include "Host.h"
#include "Packing.h"
#include "ZorError.h"
#include "platform/win32/Win32.h"

namespace kozor::program {

namespace {

constexpr const char* kListName = "names";

template <typename Call>
void NamingFailures(const std::filesystem::path& directory, Call call) {
  try {
    call();
  } catch (const FileFailure& failure) {
    throw Failure(Visible(directory.string()) + ": " + failure.what());
  }
}

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

void SourceList::SetBase(const std::string& base) {
  if (base == lastBase) return;
  lastBase = base;
  text += '"' + base + (base.ends_with('\\') ? "\"\n" : "\\\"\n");
}

void SourceList::Add(const std::string& base, const std::vector<std::string>& names) {
  if (!names.empty()) SetBase(base);
  for (const std::string& name : names) text += '"' + name + "\"\n";
}

void SourceList::AddFolders(const std::string& base, std::vector<std::string> names) {
  std::sort(names.begin(), names.end(), std::greater());
  for (std::string& name : names) name += '\\';
  Add(base, names);
}

std::unique_ptr<NameList> SourceList::Pass(const std::string& workDirectory) const {
  if (text.empty()) return nullptr;
  auto list = std::make_unique<NameList>(HostPath(workDirectory));
  list->Add(text);
  list->Pass();
  return list;
}

NameList::NameList(std::filesystem::path directory) : parent(std::move(directory)) {
  NamingFailures(parent, [&] {
    const Descriptor opened = OpenDirectory(parent);
    if (!opened.IsOpen()) FailBySystem();
    folder.emplace(opened.Number());
    file = CreateNewFile(folder->Directory(), kListName);
  });
}

void NameList::Add(std::string_view lines) {
  constexpr std::size_t kPiece = 64 << 10;
  waiting += lines;
  if (waiting.size() >= kPiece) Write();
}

void NameList::Write() {
  NamingFailures(parent, [&] { WriteAll(file.Number(), std::as_bytes(std::span(waiting))); });
  waiting.clear();
}

void NameList::Pass() {
  Write();
  NamingFailures(parent, [&] {
    if (!file.Finish()) FailBySystem();
  });
  AddPackingSwitch("\"-with" + folder->LibraryPathOf(kListName) + '"');
}

void AddListOnly(const std::string& archive, const std::string& workDirectory,
                 const std::string& name) {
  const int code = RunArchiver("a \"-w" + workDirectory + "\" \"" + archive + '"');
  StopIfAsked();
  if (code == 0) return;
  const auto error = static_cast<ZorError>(code - 0x8000);  // the library's numbering
  throw Failure(Visible(name) + ": folders and links: " + std::string(ErrorText(error)));
}

}  // namespace kozor::program
