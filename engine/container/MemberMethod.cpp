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
    {"lh0", codec::Method::Lh0}, {"lz4", codec::Method::Lz4}, {"pm0", codec::Method::Pm0},
    {"lh1", codec::Method::Lh1}, {"lh2", codec::Method::Lh2}, {"lh3", codec::Method::Lh3},
    {"lh4", codec::Method::Lh4}, {"lh5", codec::Method::Lh5}, {"lh6", codec::Method::Lh6},
    {"lh7", codec::Method::Lh7}, {"lhx", codec::Method::Lhx}, {"lzs", codec::Method::Lzs},
    {"lz5", codec::Method::Lz5}, {"pm1", codec::Method::Pm1}, {"pm2", codec::Method::Pm2},
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
