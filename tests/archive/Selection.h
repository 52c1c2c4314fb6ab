// Selection.h - a selection in one expression.
#pragma once

#include <initializer_list>
#include <string>

#include "ZorFind.h"

namespace kozor::test {

// What these masks select below `base`.
inline ZorFind Selection(const std::string& base, std::initializer_list<std::string> masks) {
  ZorFind find;
  find.SetCurrentDirectoryA(base.c_str());
  for (const std::string& mask : masks) find.AddTail(mask.c_str());
  return find;
}

}  // namespace kozor::test
