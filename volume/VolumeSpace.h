// VolumeSpace.h - how many bytes a file at a given path can take.
#pragma once

#include <cstdint>

// The free bytes of the medium, and the room of a file that would be replaced, less the directories
// that would have to be made; at most 0xFFFFFFFF.  0 for a path without a root and for a drive
// without a medium.
std::uint32_t ZorQueryVolumeSpace(const char* path);
