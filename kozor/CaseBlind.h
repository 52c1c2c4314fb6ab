// CaseBlind.h - names that the library takes for one, because they differ in case alone.
#pragma once

#include <map>
#include <set>

#include "platform/classlib/ClassLib.h"

namespace kozor::program {

struct IgnoringCase {
  bool operator()(const CString& a, const CString& b) const { return a.CompareNoCase(b) < 0; }
};

using CaseBlindSet = std::set<CString, IgnoringCase>;
template <typename Value>
using CaseBlindMap = std::map<CString, Value, IgnoringCase>;

}  // namespace kozor::program
