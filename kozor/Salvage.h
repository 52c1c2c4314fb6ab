// Salvage.h - what the volumes that are left tell of a backup set when others are missing and there
// is no catalogue.
#pragma once

#include "Catalogue.h"
#include "Volumes.h"

namespace kozor::program {

// The files that begin on the volumes at hand, without checksums.  A volume after a missing one
// begins in the middle of a file of which nothing is known; on it the first record counts that can
// be proven: from it on heads in sound form follow one another up to the end of the volume, or into
// the next one.  Complains of each volume that is missing or on which nothing can be proven, and of
// the number of files that are lost without a name.  Throws Failure when there is no volume at all.
Catalogue SalvageCatalogue(const VolumeName& name);

}  // namespace kozor::program
