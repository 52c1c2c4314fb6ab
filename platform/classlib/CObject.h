// CObject.h - the root of the class library: what every class derived from it can be asked.
#pragma once

#include "platform/Export.h"

inline namespace kozor_names {

class CArchive;
class CDumpContext;  // only ever named: nothing here writes a dump

// Describes a class while the program runs.
struct CRuntimeClass {
  const char* m_lpszClassName;
  int m_nObjectSize;  // bytes
  const CRuntimeClass* m_pBaseClass;
};

// Objects aren't copyable unless a derived class says how.  The first virtual operations stand in
// the order that applications count on.
class ZOR_PLATFORM_API CObject {
 public:
  virtual const CRuntimeClass* GetRuntimeClass() const;
  virtual ~CObject();
  // Stores or loads the object.  Here it does nothing.
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
