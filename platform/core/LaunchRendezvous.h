#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace platform {

// Processes of one program started for one request within a short time of each other meet on
// the session bus, so that one of them handles every operand. The first to claim |busName|
// gathers: for |window| it takes the operands the others hand over, then refuses any more. Each
// other process hands its operands over and is done. The gatherer keeps the name while the object
// lives, so a process that comes after the window learns that another one is still running.
//
// On the bus: |busName| owns kObjectPath, whose method kInterface.Join(as operands) answers true
// when it took them. Main thread only; the constructor runs the event loop (an EventLoop must
// exist) for up to |window| while gathering, and for up to kJoinTimeout per call while joining.
class LaunchRendezvous {
  public:
    enum class Role {
        Gatherer,    // handles operands(): its own, then the others' in the order they came
        HandedOver,  // another process took this one's operands
        Latecomer,   // another process runs, no longer gathering (or not answering): alone
    };
    static constexpr const char* kObjectPath = "/org/parleyapp/LaunchRendezvous";
    static constexpr const char* kInterface = "org.parleyapp.LaunchRendezvous";
    static constexpr std::chrono::milliseconds kJoinTimeout{1000};

    // Without a bus (logged) the process gathers alone.
    LaunchRendezvous(const std::string& busName,
                     std::vector<std::string> operands,
                     std::chrono::milliseconds window);
    ~LaunchRendezvous();
    LaunchRendezvous(const LaunchRendezvous&) = delete;
    LaunchRendezvous& operator=(const LaunchRendezvous&) = delete;

    Role role() const { return role_; }
    const std::vector<std::string>& operands() const { return operands_; }

  private:
    struct Gathering;
    bool gather(std::chrono::milliseconds window);
    enum class JoinAnswer { Taken, Refused, NoGatherer };
    JoinAnswer join() const;

    std::string busName_;
    std::vector<std::string> operands_;
    Role role_ = Role::Gatherer;
    std::unique_ptr<Gathering> gathering_;
};

}  // namespace platform
