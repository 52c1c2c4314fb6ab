// MemberMethod.h - the method ids of headers as the codec's methods.
#pragma once

#include <optional>

#include "engine/codec/Codec.h"
#include "engine/container/MemberHeader.h"

namespace kozor::container {

// The method by which a member's data can be unpacked; empty when there is no decoder for it.
std::optional<codec::Method> UnpackingMethod(const MethodId& id);

}  // namespace kozor::container
