// CObject.cpp - the root of the class library.
#include "platform/classlib/CObject.h"

const CRuntimeClass CObject::classCObject{"CObject", sizeof(CObject), nullptr};

const CRuntimeClass* CObject::GetRuntimeClass() const {
  return &classCObject;
}

CObject::~CObject() = default;

void CObject::Serialize(CArchive& /*archive*/) {}

void CObject::AssertValid() const {}

void CObject::Dump(CDumpContext& /*context*/) const {}
