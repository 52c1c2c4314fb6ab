# Writes a source with the bytes of the file STUB to the file SOURCE.
file(SIZE "${STUB}" size)
if(size GREATER_EQUAL 65536)
  message(FATAL_ERROR "The stub has ${size} bytes: programs look for archives within 64 KiB")
endif()
file(READ "${STUB}" bytes HEX)
string(REGEX REPLACE "(..)" "0x\\1," bytes "${bytes}")
string(REGEX REPLACE "(................................................................................)" "\\1\n" bytes "${bytes}")
file(WRITE "${SOURCE}" "#include \"engine/sfx/Stub.h\"

namespace kozor::sfx {
namespace {

constexpr std::uint8_t kStub[] = {
${bytes}};

}  // namespace

std::span<const std::uint8_t> Stub() {
  return kStub;
}

}  // namespace kozor::sfx
")
