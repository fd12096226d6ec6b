#pragma once

#include <string>

namespace platform {

// Removes what copies that were killed left in a work folder (see CopyStaging): every entry no
// running copy holds. Nothing outside the work folder is looked at, so no file that people put
// anywhere is ever taken for a leftover, whatever its name.
class InterruptedCopySweep {
  public:
    // Sweeps the work folder that serves copies into |destinationFolder|. Returns the number of
    // entries removed (each logged). Safe while other copies, of this process or others, run.
    static int run(const std::string& destinationFolder);
};

}  // namespace platform
