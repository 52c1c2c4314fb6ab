// GuestOther.cpp - a program's own classes with the library's names; used by StringTest.cpp.
#include <string>

class CObject {
 public:
  virtual ~CObject();
  virtual std::string Name() const { return "CObject"; }
};
CObject::~CObject() = default;

class CFile : public CObject {
 public:
  CFile();
  std::string Name() const override { return "CFile"; }
};
CFile::CFile() = default;

class CString {
 public:
  explicit CString(const char* text);
  int GetLength() const noexcept { return -1; }
  std::string text;
};
CString::CString(const char* other) : text(other) {}

std::string WhatTheirsSay() {
  const CString string("CString");
  return string.GetLength() == -1 ? string.text + " " + CFile().Name() + " " + CObject().Name()
                                  : "";
}
