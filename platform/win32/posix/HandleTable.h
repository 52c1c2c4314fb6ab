// HandleTable.h - what a HANDLE stands for.
//
// A handle is a number that is looked up, not a pointer: a stale or invented one is answered with
// ERROR_INVALID_HANDLE, as the real calls do.  An object lives until its handle is closed and the
// last call that works on it has returned.
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

// What CloseHandle closes.  (A search has FindClose.)
class Closable : public Object {
 public:
  // What is left to do before the handle is gone; false, with the last error set, if it failed.
  virtual bool Finish() { return true; }
};

HANDLE AddHandle(std::shared_ptr<Object> object);
// Null for what is no handle; the last error isn't touched.
std::shared_ptr<Object> FindHandle(HANDLE handle);
// Takes a handle out and returns its object, null for what is no handle.
std::shared_ptr<Object> RemoveHandle(HANDLE handle);

// The object if it is of this kind; else null, with the last error ERROR_INVALID_HANDLE.
template <typename Kind>
std::shared_ptr<Kind> FindObject(HANDLE handle) {
  auto object = std::dynamic_pointer_cast<Kind>(FindHandle(handle));
  if (!object) SetLastError(ERROR_INVALID_HANDLE);
  return object;
}

}  // namespace kozor::posix
