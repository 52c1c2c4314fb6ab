// Errors.h - the one place where failures of others become values of ZorError.
#pragma once

#include "ZorError.h"

class CException;

// The value of an archiver's code: 0 for 0, the code less 0x8000 for those of the list, and
// ZorErrorEngineUnknown for any other, negative ones included.
ZorError ZorErrorFromEngine(int code);

// ZorErrorDiskFull when a file operation ran out of room, else ZorErrorFileFailure.  The exception
// remains the caller's to delete.
ZorError ZorErrorFromException(const CException& exception);
