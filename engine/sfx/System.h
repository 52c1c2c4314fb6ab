// System.h - everything that the program needs from the operating system, besides the files that it
// writes (Destination.h).  Each system has its own implementation: linux/ and windows/.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace kozor::sfx::host {

enum class Stream { Output, Errors };
// Writes UTF-8 to a standard stream.  Returns false if not everything could be written.
bool WriteText(Stream stream, std::string_view text);

[[noreturn]] void Exit(int status);

// The text for an error number of the system.
std::string Reason(long error);

// The name in a path, as the system divides paths.
std::string_view FileNameOf(std::string_view path);

// Maps the file that this program was started from, for good.  If it can't, the result is empty and
// `problem` says why.
std::span<const std::uint8_t> OwnFile(std::string& problem);

// Reserves memory that reads as zeros and takes up room only once it is used.  Null on failure.
std::uint8_t* ReserveMemory(std::uint64_t bytes);
// Gives back a part that is no longer needed; it must not be used again.  `begin` and `bytes` are
// multiples of 64 KiB.
void DropMemory(std::uint8_t* begin, std::size_t bytes);
void FreeMemory(std::uint8_t* begin, std::uint64_t bytes);

}  // namespace kozor::sfx::host
