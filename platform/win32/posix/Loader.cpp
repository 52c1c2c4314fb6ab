// Loader.cpp - LoadLibraryA and related calls on the host's dynamic loader.
#include <dirent.h>
#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include "platform/win32/AnsiPath.h"
#include "platform/win32/PosixSystem.h"
#include "platform/win32/posix/HostNames.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;
using kozor::kAnsiSlashRules;
using kozor::text::Path;

struct Module {
  unsigned loads = 0;
  std::u16string name;  // key of its file's name
};

// The loaded modules, and the directory of SetDllDirectoryA.  The host loader counts one load of
// each.
struct Modules {
  std::mutex lock;
  std::map<HMODULE, Module> loaded;
  std::string directory;  // library path, or empty
};

Modules& TheModules() {
  static Modules& modules = *new Modules;
  return modules;
}

// The only system module that programs load by name.  It has no file here.
constexpr std::u16string_view kSystemModule = u"KERNEL32.DLL";

HMODULE SystemModule() {
  static char place;
  return reinterpret_cast<HMODULE>(&place);
}

FARPROC FindSystemFunction(std::string_view name) {
  if (name == "GetDiskFreeSpaceExA") return reinterpret_cast<FARPROC>(&GetDiskFreeSpaceExA);
  return nullptr;
}

HMODULE CountLoad(HMODULE module, std::string_view hostFile) {
  Modules& modules = TheModules();
  const std::lock_guard guard(modules.lock);
  Module& entry = modules.loaded[module];
  if (entry.loads++ == 0) {
    entry.name = CaseKey(HostNameOf(hostFile));
  } else if (module != SystemModule()) {
    ::dlclose(module);
  }
  return module;
}

// A bare name means the module of that name that is loaded already, wherever it came from.
HMODULE LoadAgain(const std::u16string& name) {
  Modules& modules = TheModules();
  const std::lock_guard guard(modules.lock);
  for (auto& [module, entry] : modules.loaded) {
    if (entry.name != name) continue;
    ++entry.loads;
    return module;
  }
  return nullptr;
}

bool IsLoaded(HMODULE module) {
  Modules& modules = TheModules();
  const std::lock_guard guard(modules.lock);
  return modules.loaded.contains(module);
}

// Adds ".DLL" to a name without extension; a trailing dot means "no extension" and is removed.
std::string WithExtension(std::string_view name) {
  if (name.ends_with('.')) return std::string(name.substr(0, name.size() - 1));
  const bool hasDot = Path(name, kAnsiSlashRules).FileName().find('.') != std::string_view::npos;
  return std::string(name) + (hasDot ? "" : ".DLL");
}

// Empty for an unknown file, so that the current directory is never searched.
std::string DirectoryOf(const std::string& hostFile) {
  return hostFile.empty() ? "" : HostParentOf(hostFile);
}

std::string ProgramFile() {
  std::array<char, PATH_MAX> path{};
  const ssize_t length = ::readlink("/proc/self/exe", path.data(), path.size());
  return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : "";
}

// The shared library that contains this code.
std::string PlatformLibraryFile() {
  Dl_info info{};
  std::array<char, PATH_MAX> real{};
  const auto* const here = reinterpret_cast<const void*>(&LoadLibraryA);
  if (::dladdr(here, &info) == 0 || ::realpath(info.dli_fname, real.data()) == nullptr) return "";
  return real.data();
}

// The file of this name in a host directory, case-insensitively; empty if there is none.
std::string FindIn(const std::string& hostDirectory, const std::string& hostName) {
  if (hostDirectory.empty()) return "";
  std::string exact = hostDirectory + '/' + hostName;
  if (::access(exact.c_str(), F_OK) == 0) return exact;
  DIR* const directory = ::opendir(hostDirectory.c_str());
  if (directory == nullptr) return "";
  const std::u16string wanted = CaseKey(hostName);
  std::string found;
  while (const dirent* const entry = ::readdir(directory)) {
    if (CaseKey(entry->d_name) != wanted) continue;
    if (found.empty() || entry->d_name < found) found = entry->d_name;
  }
  ::closedir(directory);
  return found.empty() ? "" : hostDirectory + '/' + found;
}

std::string SetDirectory() {
  Modules& modules = TheModules();
  const std::lock_guard guard(modules.lock);
  if (modules.directory.empty()) return "";
  const std::optional<LibraryPath> path = ParsePath(modules.directory.c_str());
  return path ? LookUp(*path).host : "";
}

// The directory of the project's installed modules: configured as absolute or relative to the
// platform library.
std::string InstalledModules() {
  std::string directory = KOZOR_ARCHIVER_DIRECTORY;
  const std::string library = PlatformLibraryFile();
  if (directory.starts_with('/')) return directory;
  return library.empty() ? "" : DirectoryOf(library) + '/' + directory;
}

// The host file of a bare name, or the name itself if only the host's loader can find it.
std::string FindModule(const std::string& hostName) {
  for (const std::string& directory : {DirectoryOf(ProgramFile()), SetDirectory(),
                                       DirectoryOf(PlatformLibraryFile()), InstalledModules()}) {
    std::string file = FindIn(directory, hostName);
    if (!file.empty()) return file;
  }
  return hostName;
}

bool IsElfFile(const std::string& hostFile) {
  std::array<char, SELFMAG> magic{};
  std::ifstream(hostFile, std::ios::binary).read(magic.data(), magic.size());
  return std::memcmp(magic.data(), ELFMAG, SELFMAG) == 0;
}

HMODULE LoadHostFile(const std::string& hostFile) {
  void* const module = ::dlopen(hostFile.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module != nullptr) return CountLoad(static_cast<HMODULE>(module), hostFile);
  // A valid module with a missing dependency counts as not found.
  const bool isThere = hostFile.find('/') != std::string::npos;
  SetLastError(isThere && !IsElfFile(hostFile) ? ERROR_BAD_EXE_FORMAT : ERROR_MOD_NOT_FOUND);
  return nullptr;
}

HMODULE LoadByPath(const std::string& name) {
  const std::optional<LibraryPath> path = ParsePath(name.c_str());
  const Found found = path ? LookUp(*path) : Found{};
  if (!found.exists || found.metadata.IsDirectory()) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
  }
  return LoadHostFile(found.host.find('/') != std::string::npos ? found.host : "./" + found.host);
}

// The loader's record of the module that contains a host address.
const link_map* ModuleOf(void* address) {
  Dl_info info{};
  void* map = nullptr;
  if (::dladdr1(address, &info, &map, RTLD_DL_LINKMAP) == 0) return nullptr;
  return static_cast<const link_map*>(map);
}

const link_map* RecordOf(HMODULE module) {
  link_map* map = nullptr;
  if (::dlinfo(module, RTLD_DI_LINKMAP, &map) != 0) return nullptr;
  return map;
}

}  // namespace

HMODULE WINAPI LoadLibraryA(LPCSTR name) {
  if (name == nullptr || *name == '\0') {
    SetLastError(ERROR_INVALID_PARAMETER);
    return nullptr;
  }
  const std::string full = WithExtension(name);
  if (!Path(full, kAnsiSlashRules).Folder().empty()) return LoadByPath(full);
  std::string hostName;
  if (!ToHostName(full, hostName)) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
  }
  const std::u16string key = CaseKey(hostName);
  if (key == kSystemModule) return CountLoad(SystemModule(), hostName);
  if (const HMODULE module = LoadAgain(key)) return module;
  return LoadHostFile(FindModule(hostName));
}

FARPROC WINAPI GetProcAddress(HMODULE module, LPCSTR name) {
  constexpr UINT_PTR kMaxOrdinal = 0xFFFF;
  FARPROC function = nullptr;
  if (!IsLoaded(module)) {
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
  }
  if (reinterpret_cast<UINT_PTR>(name) > kMaxOrdinal) {
    if (module == SystemModule()) {
      function = FindSystemFunction(name);
    } else {
      void* const address = ::dlsym(module, name);
      // dlsym also searches the module's dependencies.
      if (address != nullptr && ModuleOf(address) == RecordOf(module)) {
        function = reinterpret_cast<FARPROC>(address);
      }
    }
  }
  if (function == nullptr) SetLastError(ERROR_PROC_NOT_FOUND);
  return function;
}

BOOL WINAPI FreeLibrary(HMODULE module) {
  Modules& modules = TheModules();
  {
    const std::lock_guard guard(modules.lock);
    const auto found = modules.loaded.find(module);
    if (found == modules.loaded.end()) return Fail(ERROR_MOD_NOT_FOUND);
    if (--found->second.loads != 0) return TRUE;
    modules.loaded.erase(found);
  }
  // Outside the lock: the module's destructors may call back.
  if (module != SystemModule()) ::dlclose(module);
  return TRUE;
}

BOOL WINAPI SetDllDirectoryA(LPCSTR directory) {
  Modules& modules = TheModules();
  const std::lock_guard guard(modules.lock);
  modules.directory = directory == nullptr ? "" : directory;
  return TRUE;
}
