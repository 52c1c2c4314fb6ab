// MemberMethod.cpp - see MemberMethod.h.
#include "engine/container/MemberMethod.h"

#include <algorithm>
#include <iterator>

namespace kozor::container {
namespace {

struct Row {
  char letters[4];
  codec::Method method;
};
constexpr Row kMethods[] = {
    {"lh0", codec::Method::lh0}, {"lz4", codec::Method::lz4}, {"pm0", codec::Method::pm0},
    {"lh1", codec::Method::lh1}, {"lh2", codec::Method::lh2}, {"lh3", codec::Method::lh3},
    {"lh4", codec::Method::lh4}, {"lh5", codec::Method::lh5}, {"lh6", codec::Method::lh6},
    {"lh7", codec::Method::lh7}, {"lhx", codec::Method::lhx}, {"lzs", codec::Method::lzs},
    {"lz5", codec::Method::lz5}, {"pm1", codec::Method::pm1}, {"pm2", codec::Method::pm2},
};

}  // namespace

std::optional<codec::Method> UnpackingMethod(const MethodId& id) {
  const auto* row = std::find_if(std::begin(kMethods), std::end(kMethods),
                                 [&](const Row& known) { return HasLetters(id, known.letters); });
  const bool isWhole = id.front() == '-' && id.back() == '-';
  if (!isWhole || row == std::end(kMethods) || !codec::CanDecode(row->method)) return std::nullopt;
  return row->method;
}

}  // namespace kozor::container
