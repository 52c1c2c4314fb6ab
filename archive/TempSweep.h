// TempSweep.h - takes away the temporaries that a run of the archiver has left behind.
#pragma once

#include "ZorFind.h"
#include "platform/classlib/ClassLib.h"

// The archiver keeps files "lhtmp???.lzh" in its work directory while it writes, and a run that is
// stopped may leave some.  Those that stood there before Begin are never touched; a file of that
// name that somebody else makes meanwhile can't be told from the run's own and goes as well.
class ZorTempSweep {
 public:
  ZorTempSweep();
  // Doesn't sweep.
  virtual ~ZorTempSweep() = default;

  // Notes what stands in `directory` now.  With an empty directory there is nothing to watch.
  void Begin(const char* directory);
  // Puts the full paths of the matching files in the place of what `list` held.
  void Snapshot(ZorFileList& list) const;
  // Removes what has come since Begin, as far as it can be removed; does nothing without a Begin.
  // Throws nothing.
  void Sweep();

 private:
  void RemoveNewcomers() const;

  CString directory;
  ZorFileList snapshot;
  int armed;  // 1 from Begin until Sweep
};
