// RemoveFile.h - removing a file where a failure is none.
#pragma once

// Removes the file; one that resists, or isn't there, stays as it is.
void ZorRemoveFileIfPossible(const char* path);
