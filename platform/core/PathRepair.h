#pragma once

#include <string>

namespace platform {

// Makes room where an entry of one kind belongs and another lies: the stray entry is set aside
// beside it under a free name ("<path>.corrupt", else "<path>.corrupt-2", "-3", ...), never
// destroyed or replaced, and one log line says what it was and where it went. Used for the store
// file, its lock files and a group's container folder, which our own code only ever makes as
// their right kind: another kind there is damage left by something else. Internal to platform/.
class PathRepair {
  public:
    enum class Kind {
        // A regular file itself: a symbolic link is not one, whatever it points at.
        RegularFile,
        // A directory, or a symbolic link to one.
        Directory,
    };

    // Sets aside what lies at |path| unless it is of |kind| or nothing is there. Another process
    // repairing the same path at the same time is harmless: whoever moves the stray first wins,
    // and an entry of the right kind moved by mistake is put back. False (logged) when a stray
    // could not be moved.
    static bool makeRoomFor(Kind kind, const std::string& path);
};

}  // namespace platform
