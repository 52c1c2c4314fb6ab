// CObject.h - the root class of the class library.
#pragma once

#include "platform/Export.h"

inline namespace kozor_names {

class CArchive;
class CDumpContext;  // only declared: nothing here writes a dump

// Describes a class at run time.
struct CRuntimeClass {
  const char* m_lpszClassName;
  int m_nObjectSize;  // bytes
  const CRuntimeClass* m_pBaseClass;
};

// Objects aren't copyable unless a derived class allows it.  Applications depend on the order of
// the first virtual operations: keep it.
class ZOR_PLATFORM_API CObject {
 public:
  virtual const CRuntimeClass* GetRuntimeClass() const;
  virtual ~CObject();
  // Stores or loads the object.  The default does nothing.
  virtual void Serialize(CArchive& archive);
  virtual void AssertValid() const;
  virtual void Dump(CDumpContext& context) const;

  CObject(const CObject&) = delete;
  CObject& operator=(const CObject&) = delete;

  static const CRuntimeClass classCObject;

 protected:
  CObject() = default;
};

}  // namespace kozor_names
