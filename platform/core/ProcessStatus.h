#pragma once

namespace platform {

// Whether another process is still alive, to clean up after one that was killed. Internal to
// platform/.
class ProcessStatus {
  public:
    // True while process |pid| exists and has not exited. A killed process that its parent has not
    // reaped yet (a zombie) has exited; a process of another user that exists is running.
    static bool isRunning(long pid);
};

}  // namespace platform
