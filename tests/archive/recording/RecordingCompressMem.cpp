// RecordingCompressMem.cpp - the one entry point that the incomplete archiver lacks.
#include "recording/Recording.h"

int RecordingCompressMem(const std::string& line);

extern "C" {

int UnlhaCompressMem(void* /*window*/, const char* line, const unsigned char* data,
                     std::uint32_t size, const std::int32_t* time, const std::uint16_t* attribute,
                     std::uint32_t* written) {
  const bool plain = time == nullptr && attribute == nullptr && written == nullptr;
  const std::string contents =
      data == nullptr ? "null" : std::string(reinterpret_cast<const char*>(data), size);
  return RecordingCompressMem((plain ? "CompressMem " : "CompressMem with outputs ") + contents +
                              " " + std::to_string(size) + ":" + line);
}

}  // extern "C"
