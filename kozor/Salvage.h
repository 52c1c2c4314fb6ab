// Salvage.h - finds the files of a backup set when volumes are missing and there is no catalogue.
#pragma once

#include "Catalogue.h"
#include "Volumes.h"

namespace kozor::program {

// Returns the files that begin on the existing volumes, without checksums.  A volume after a
// missing one begins in the middle of an unknown file.  There, reading starts at the first record
// that can be proven: valid heads follow one another from it to the end of the volume, or into the
// next one.  Reports each volume that is missing or on which nothing can be proven, and the number
// of files that are lost without a name.  Throws Failure if there is no volume at all.
Catalogue SalvageCatalogue(const VolumeName& name);

}  // namespace kozor::program
