// HandleTable.h - maps HANDLE values to objects.
//
// A handle is a number, not a pointer: a stale or invented one fails with ERROR_INVALID_HANDLE, as
// in the real calls.  An object lives until its handle is closed and the last call that uses it has
// returned.
#pragma once

#include <memory>

#include "platform/win32/PosixFiles.h"

namespace kozor::posix {

// Base of everything that has a handle.
class Object {
 public:
  Object() = default;
  virtual ~Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
};

// An object that CloseHandle closes.  (A search has FindClose.)
class Closable : public Object {
 public:
  // Pending work when the handle is closed.  Returns false with the last error set if it failed.
  virtual bool Finish() { return true; }
};

HANDLE AddHandle(std::shared_ptr<Object> object);
// Null for an invalid handle; the last error isn't changed.
std::shared_ptr<Object> FindHandle(HANDLE handle);
// Removes a handle and returns its object, or null for an invalid handle.
std::shared_ptr<Object> RemoveHandle(HANDLE handle);

// The object if it has this type, else null with the last error ERROR_INVALID_HANDLE.
template <typename Kind>
std::shared_ptr<Kind> FindObject(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<Kind>(FindHandle(handle));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}

}  // namespace kozor::posix
