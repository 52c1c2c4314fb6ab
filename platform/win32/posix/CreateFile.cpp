// CreateFile.cpp - CreateFileA: opens and creates files by the rules of Win32.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "platform/win32/posix/Attributes.h"
#include "platform/win32/posix/DirectoryNames.h"
#include "platform/win32/posix/File.h"
#include "platform/win32/posix/LookUp.h"
#include "platform/win32/posix/SystemCalls.h"

namespace {

using namespace kozor::posix;

constexpr DWORD kKnownAccess = GENERIC_READ | GENERIC_WRITE;
constexpr DWORD kKnownShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr DWORD kAttributeFlags = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN |
                                  FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                                  FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_TEMPORARY;
constexpr DWORD kKnownFlags =
    kAttributeFlags | FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_DELETE_ON_CLOSE;
constexpr mode_t kNewFileMode = 0666;
constexpr mode_t kNamelessMode = 0600;
constexpr mode_t kNewReadOnlyMode = 0444;

// Never wait for the other end of a FIFO; never acquire a controlling terminal.
constexpr int kOpenFlags = O_NONBLOCK | O_NOCTTY | O_CLOEXEC;

// One call's arguments.
struct Request {
  DWORD access;
  DWORD share;
  DWORD disposition;
  DWORD flags;

  bool Writes() const { return (access & GENERIC_WRITE) != 0; }
  bool Truncates() const {
    return disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING;
  }
  bool Creates() const {
    return disposition == CREATE_NEW || disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
  }
  bool DeletesOnClose() const { return (flags & FILE_FLAG_DELETE_ON_CLOSE) != 0; }
  mode_t NewMode() const {
    if (DeletesOnClose()) return kNamelessMode;
    return (flags & FILE_ATTRIBUTE_READONLY) != 0 ? kNewReadOnlyMode : kNewFileMode;
  }
  bool TellsOfExisting() const {
    return disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS;
  }
  // Attributes asked for beyond those that every new file has.
  DWORD AskedAttributes() const {
    return flags & kAttributeFlags & ~(FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_ARCHIVE);
  }
};

bool IsValid(const Request& request, const SECURITY_ATTRIBUTES* security, HANDLE templateFile) {
  if ((request.access & ~kKnownAccess) != 0 || (request.share & ~kKnownShare) != 0) return false;
  if ((request.flags & ~kKnownFlags) != 0 || templateFile != nullptr) return false;
  if (security != nullptr && security->lpSecurityDescriptor != nullptr) return false;
  if (request.DeletesOnClose() && request.disposition != CREATE_NEW) return false;
  if (request.disposition < CREATE_NEW || request.disposition > TRUNCATE_EXISTING) return false;
  return request.disposition != TRUNCATE_EXISTING || request.Writes();
}

std::shared_ptr<File> Refuse(DWORD error) {
  SetLastError(error);
  return nullptr;
}

// A hidden or system file is replaced only if the caller passes these attributes.  A leading dot
// doesn't make a file hidden in this sense.
bool KeepsFromReplacing(DWORD stored, DWORD flags) {
  return (stored & (FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM) & ~flags) != 0;
}

// Why an existing file can't be opened in this way; ERROR_SUCCESS if it can.
DWORD RefusalOfExisting(const Request& request, const LibraryPath& path, const Found& found) {
  if (request.disposition == CREATE_NEW) return ERROR_FILE_EXISTS;
  if (found.metadata.dangling) {
    // Never create the target of a dangling link.
    return request.Creates() ? ERROR_ACCESS_DENIED : ERROR_FILE_NOT_FOUND;
  }
  if (found.metadata.IsDirectory()) {
    const bool allowed = (request.flags & FILE_FLAG_BACKUP_SEMANTICS) != 0;
    return allowed && !request.Truncates() ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
  }
  if (path.trailingSeparator) return ERROR_INVALID_NAME;
  if (!found.metadata.IsRegular()) return ERROR_ACCESS_DENIED;
  if (!request.Writes() && !request.Truncates()) return ERROR_SUCCESS;
  const std::optional<DWORD> stored = StoredAttributes(found.host.c_str());
  if (IsReadOnly(found.metadata, stored)) return ERROR_ACCESS_DENIED;
  if (request.disposition == CREATE_ALWAYS &&
      KeepsFromReplacing(stored.value_or(0), request.flags)) {
    return ERROR_ACCESS_DENIED;
  }
  return ERROR_SUCCESS;
}

// Opening for writing also opens for reading if permitted: locks and mappings need it.
int OpenDescriptor(const Request& request, const Found& found) {
  const char* const host = found.host.c_str();
  const bool writes = request.Writes() || request.Truncates();
  if (found.metadata.IsDirectory() || !writes) return Calls().open(host, O_RDONLY | kOpenFlags, 0);
  const int file = Calls().open(host, O_RDWR | kOpenFlags, 0);
  if (file >= 0 || errno != EACCES || (request.access & GENERIC_READ) != 0) return file;
  return Calls().open(host, O_WRONLY | kOpenFlags, 0);
}

// Another file may have taken the name since the look-up.
bool IsStillUsable(int descriptor, const Found& found, Metadata& metadata) {
  if (!ReadMetadata(descriptor, metadata)) return FailErrno();
  const bool good = metadata.IsDirectory() ? found.metadata.IsDirectory() : metadata.IsRegular();
  return good || Fail(ERROR_ACCESS_DENIED);
}

bool TruncateExisting(const Request& request, const Found& found, const File& file) {
  if (Calls().ftruncate(file.Descriptor(), 0) != 0) return FailErrno();
  return request.disposition != CREATE_ALWAYS ||
         ResetAttributes(found.host.c_str(), found.metadata, request.AskedAttributes()) ||
         FailErrno();
}

std::shared_ptr<File> TakeOver(int descriptor, const Found& found, DWORD access) {
  try {
    return std::make_shared<File>(descriptor, std::string(found.HostName()), access);
  } catch (...) {
    ::close(descriptor);
    throw;
  }
}

// Removes a file again that was made by a call that fails after all.
class Creation {
 public:
  Creation() = default;
  ~Creation() { Undo(); }
  Creation(const Creation&) = delete;
  Creation& operator=(const Creation&) = delete;

  void Begin(const std::string& path) { host = path; }
  void Keep() { host.clear(); }
  void Undo() {
    const int cause = errno;
    if (!host.empty()) Calls().unlink(host.c_str());
    errno = cause;
    host.clear();
  }

 private:
  std::string host;
};

std::shared_ptr<File> OpenExisting(const Request& request, const Found& found) {
  const int descriptor = OpenDescriptor(request, found);
  if (descriptor < 0) return Refuse(ErrorFromErrno(errno));
  auto file = TakeOver(descriptor, found, request.access);
  Metadata metadata;
  if (!IsStillUsable(descriptor, found, metadata)) return nullptr;
  if (metadata.IsRegular() &&
      !file->Hold().Take(descriptor, metadata.id, {request.access, request.share})) {
    return nullptr;
  }
  if (request.Truncates() && !TruncateExisting(request, found, *file)) return nullptr;
  return file;
}

// `hostError` receives errno if the file couldn't be created: EEXIST if there is one.
std::shared_ptr<File> CreateNew(const Request& request, const LibraryPath& path, const Found& found,
                                Creation& creation, int& hostError) {
  hostError = 0;
  if (path.trailingSeparator) return Refuse(ERROR_INVALID_NAME);
  DirectoryChange change(found.host);
  creation.Begin(found.host);
  const int descriptor = Calls().open(
      found.host.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | kOpenFlags, request.NewMode());
  if (descriptor < 0) {
    creation.Keep();
    hostError = errno;
    return Refuse(errno == EEXIST ? ERROR_FILE_EXISTS : ErrorFromErrno(errno));
  }
  auto file = TakeOver(descriptor, found, request.access);
  change.Added();
  Metadata metadata;
  if (!ReadMetadata(descriptor, metadata)) return Refuse(ErrorFromErrno(errno));
  if (!file->Hold().Take(descriptor, metadata.id, {request.access, request.share})) {
    creation.Keep();  // someone else has it by now
    return nullptr;
  }
  const DWORD asked = request.AskedAttributes();
  if (asked != 0 && !ResetAttributes(found.host.c_str(), metadata, asked)) {
    return Refuse(ErrorFromErrno(errno));
  }
  return file;
}

// Most files to create are new: then this saves the look-up.  Returns false if that has to decide.
bool CreateAtOnce(const Request& request, const LibraryPath& path, Creation& creation,
                  std::shared_ptr<File>& file) {
  const bool isNewMostly =
      request.disposition == CREATE_NEW || request.disposition == CREATE_ALWAYS;
  if (!isNewMostly || !IsCreatedExactly(path)) return false;
  Found missing;
  missing.host = path.Host();
  int hostError = 0;
  file = CreateNew(request, path, missing, creation, hostError);
  return hostError == 0;
}

// Tries again if the file appears or disappears between the look-up and the opening.
std::shared_ptr<File> Open(const Request& request, const LibraryPath& path, Creation& creation) {
  constexpr int kTries = 10;
  std::shared_ptr<File> file;
  if (CreateAtOnce(request, path, creation, file)) {
    if (file) SetLastError(ERROR_SUCCESS);
    return file;
  }
  for (int i = 0; i < kTries; ++i) {
    const Found found = LookUp(path, request.Creates() ? Purpose::Create : Purpose::Find);
    if (found.exists) {
      const DWORD refusal = RefusalOfExisting(request, path, found);
      if (refusal != ERROR_SUCCESS) return Refuse(refusal);
      file = OpenExisting(request, found);
      if (file) SetLastError(request.TellsOfExisting() ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
      return file;
    }
    if (found.error != ERROR_FILE_NOT_FOUND || !request.Creates()) return Refuse(found.error);
    int hostError = 0;
    file = CreateNew(request, path, found, creation, hostError);
    if (file) SetLastError(ERROR_SUCCESS);
    if (hostError != EEXIST || request.disposition == CREATE_NEW) return file;
  }
  return Refuse(ERROR_SHARING_VIOLATION);
}

}  // namespace

HANDLE WINAPI CreateFileA(LPCSTR name, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                          DWORD disposition, DWORD flags, HANDLE templateFile) {
  const Request request{access, share, disposition, flags};
  if (!IsValid(request, security, templateFile)) {
    SetLastError(ERROR_INVALID_PARAMETER);
    return INVALID_HANDLE_VALUE;
  }
  const std::optional<LibraryPath> path = ParsePath(name);
  if (!path) return INVALID_HANDLE_VALUE;
  Creation creation;
  std::shared_ptr<File> file = Open(request, *path, creation);
  if (!file) return INVALID_HANDLE_VALUE;
  HANDLE handle = AddHandle(std::move(file));
  if (!request.DeletesOnClose()) creation.Keep();
  return handle;
}

BOOL WINAPI CloseHandle(HANDLE handle) {
  const auto object = FindObject<Closable>(handle);
  if (!object) return FALSE;
  if (!RemoveHandle(handle)) return Fail(ERROR_INVALID_HANDLE);
  return object->Finish();
}
