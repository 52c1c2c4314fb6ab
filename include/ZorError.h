// ZorError.h - every failure that the library reports.
//
// The numbers are part of the interface: an application reads them from GetError.  From 5 upward a
// value is the archiver's result code minus 0x8000.  Values that the library sets itself as well
// are named after their meaning.  Those named after a code come from the archiver only; the comment
// gives its meaning.
#pragma once

enum ZorError : int {
  ZorErrorNone = 0,
  ZorErrorEngineUnavailable = 1,  // UNLHA32.DLL can't be loaded or lacks an entry point
  ZorErrorNoDirectory = 2,        // Extract was given no target directory
  ZorErrorFileFailure = 3,        // a file operation failed for a reason with no value of its own
  ZorErrorEngineUnknown = 4,      // the archiver gave a code outside this list
  ZorErrorDiskFull = 5,
  ZorErrorEngine8006 = 6,      // a read-only file is in the way
  ZorErrorEngine8007 = 7,      // the user skipped the file
  ZorErrorEngine8008 = 8,      // a file of unknown kind or with special attributes
  ZorErrorEngine8009 = 9,      // compression method not supported
  ZorErrorEngine800A = 10,     // password protected
  ZorErrorEngine800B = 11,     // version not supported
  ZorErrorEngine800C = 12,     // checksum of a member's data doesn't match
  ZorErrorFileOpen = 13,       // a file can't be opened
  ZorErrorEngine800E = 14,     // not overwritten, the existing file is newer
  ZorErrorEngine800F = 15,     // file or member doesn't exist
  ZorErrorEngine8010 = 16,     // file exists already
  ZorErrorEngine8011 = 17,     // too many files
  ZorErrorMakeDirectory = 18,  // a target directory can't be made
  ZorErrorEngine8013 = 19,     // can't write
  ZorErrorEngine8014 = 20,     // damaged Huffman data
  ZorErrorEngine8015 = 21,     // damaged comment header
  ZorErrorEngine8016 = 22,     // header checksum doesn't match
  ZorErrorEngine8017 = 23,     // damaged header
  ZorErrorArchiveOpen = 24,    // the archive can't be opened, or lacks a member that is needed
  ZorErrorEngine8019 = 25,     // not an archive
  ZorErrorEngine801A = 26,     // can't read
  ZorErrorEngine801B = 27,     // the file can't be taken as an archive of this kind
  ZorErrorEngine801C = 28,     // unknown command
  ZorErrorEngine801D = 29,     // no memory for the work area
  ZorErrorOutOfMemory = 30,
  ZorErrorEngineBusy = 31,  // the archiver is at work already, or refused the callback
  ZorErrorCanceled = 32,    // stopped by OnAbort, or the selection was empty
  ZorErrorEngine8021 = 33,  // archive handle not valid
  ZorErrorEngine8022 = 34,  // search not started
  ZorErrorEngine8023 = 35,  // function not supported
  ZorErrorEngine8024 = 36,  // time stamp not valid
  ZorErrorEngine8025 = 37,  // temporary file can't be opened
  ZorErrorEngine8026 = 38,  // file name too long
  ZorErrorEngine8027 = 39,  // archive is read-only
  ZorErrorSameName = 40,    // two files would get the same name in the archive
  ZorErrorArchiveNotFound = 41,
  ZorErrorEngine802A = 42,  // response file can't be read
  ZorErrorEngine802B = 43,  // no file name given
  ZorErrorEngine802C = 44,  // the temporary can't be copied over the archive
};
