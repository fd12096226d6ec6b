// Exec to first painted pixels on an X display: starts a program, watches the screen where its
// window shows (the middle of the screen, 376 x 370) until two of its pixels have their colours
// (the sheet's background and the Cancel button's white), then kills it and waits for the screen
// to clear. Runs the two programs in interleaved pairs and prints each one's median and the median
// of the pairs' ratios. Usage (bench/run-first-paint.sh sets up the display and the bus):
//   first_paint_bench RUNS PROGRAM [ARG...] -- BASELINE [ARG...]
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <thread>
#include <vector>

extern char** environ;

namespace {

using Clock = std::chrono::steady_clock;

struct Probe {
    int x;  // from the window's top-left corner
    int y;
    unsigned long rgb;
};

// Inside the logo band (the background) and inside the Cancel button's fill.
constexpr Probe kProbes[] = {{10, 10, 0xF7F7F7}, {283, 326, 0xFFFFFF}};
constexpr int kWidth = 376;
constexpr int kHeight = 370;
constexpr auto kGiveUp = std::chrono::seconds(20);

class SheetArea {
  public:
    explicit SheetArea(Display* display) : display_(display) {
        const int width = DisplayWidth(display, DefaultScreen(display));
        const int height = DisplayHeight(display, DefaultScreen(display));
        left_ = (width - kWidth) / 2;
        top_ = height - (height - kHeight) / 2 - kHeight;
    }

    unsigned long pixelAt(const Probe& probe) const {
        XImage* image = XGetImage(display_, DefaultRootWindow(display_), left_ + probe.x,
                                  top_ + probe.y, 1, 1, AllPlanes, ZPixmap);
        if (!image)
            return 0;
        const unsigned long pixel = XGetPixel(image, 0, 0) & 0xFFFFFF;
        XDestroyImage(image);
        return pixel;
    }

    bool showsWindow() const {
        return std::all_of(std::begin(kProbes), std::end(kProbes),
                           [&](const Probe& probe) { return pixelAt(probe) == probe.rgb; });
    }

    bool showsNone() const {
        return std::none_of(std::begin(kProbes), std::end(kProbes),
                            [&](const Probe& probe) { return pixelAt(probe) == probe.rgb; });
    }

  private:
    Display* display_;
    int left_ = 0;
    int top_ = 0;
};

bool waitUntil(const std::function<bool()>& condition) {
    const auto deadline = Clock::now() + kGiveUp;
    while (!condition()) {
        if (Clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    return true;
}

// Milliseconds from exec to both probes showing; negative when the window never showed.
double timeFirstPaint(const SheetArea& screen, std::vector<char*> argv) {
    if (!waitUntil([&] { return screen.showsNone(); })) {
        std::fprintf(stderr, "first_paint_bench: the screen did not clear\n");
        return -1;
    }
    argv.push_back(nullptr);
    pid_t child = 0;
    const auto start = Clock::now();
    // Their lines would only slow the run down and fill the report.
    posix_spawn_file_actions_t quiet;
    posix_spawn_file_actions_init(&quiet);
    posix_spawn_file_actions_addopen(&quiet, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    posix_spawn_file_actions_addopen(&quiet, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    const int spawned = posix_spawn(&child, argv[0], &quiet, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&quiet);
    if (spawned != 0) {
        std::perror(argv[0]);
        return -1;
    }
    const bool shown = waitUntil([&] { return screen.showsWindow(); });
    const double ms = std::chrono::duration<double, std::milli>(Clock::now() - start).count();
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    if (!shown)
        std::fprintf(stderr, "first_paint_bench: %s showed nothing\n", argv[0]);
    return shown ? ms : -1;
}

double median(std::vector<double> values) {
    std::sort(values.begin(), values.end());
    const size_t n = values.size();
    return n % 2 ? values[n / 2] : (values[n / 2 - 1] + values[n / 2]) / 2;
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<char*> ours, base;
    int runs = argc > 1 ? std::atoi(argv[1]) : 0;
    int i = 2;
    for (; i < argc && std::string(argv[i]) != "--"; ++i)
        ours.push_back(argv[i]);
    for (++i; i < argc; ++i)
        base.push_back(argv[i]);
    if (runs <= 0 || ours.empty() || base.empty()) {
        std::fprintf(stderr,
                     "usage: first_paint_bench RUNS PROGRAM [ARG...] -- BASELINE [ARG...]\n");
        return 64;
    }
    Display* display = XOpenDisplay(nullptr);
    if (!display) {
        std::fprintf(stderr, "first_paint_bench: no X display\n");
        return 69;
    }
    const SheetArea screen(display);
    std::vector<double> ourTimes, baseTimes, ratios;
    for (int run = 0; run < runs; ++run) {
        // Which goes first alternates, so that neither always follows the other's exit.
        const bool oursFirst = run % 2 == 0;
        const double a = timeFirstPaint(screen, oursFirst ? ours : base);
        const double b = timeFirstPaint(screen, oursFirst ? base : ours);
        const double ourMs = oursFirst ? a : b, baseMs = oursFirst ? b : a;
        if (ourMs < 0 || baseMs < 0)
            return 1;
        std::printf("pair %2d: %7.1f ms   baseline %7.1f ms\n", run + 1, ourMs, baseMs);
        ourTimes.push_back(ourMs);
        baseTimes.push_back(baseMs);
        ratios.push_back(ourMs / baseMs);
    }
    std::printf(
        "exec to first painted pixels, %d interleaved pairs, medians: %.1f ms against %.1f ms\n",
        runs, median(ourTimes), median(baseTimes));
    std::printf("median ratio of the pairs %.2fx (target <= 1.15x)\n", median(ratios));
    XCloseDisplay(display);
    return 0;
}
