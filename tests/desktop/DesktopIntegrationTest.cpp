// The installed tree: cmake --install into a temporary prefix, then each integration's own command,
// filled in as its file manager or browser would, runs the installed parley-share, which wakes the
// installed host. The package built by cpack does the same from its unpacked tree. Nobody clicks
// here: "--action fav" goes right after the program's name.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "platform/core/EventLoop.h"
#include "platform/ui/Bitmap.h"
#include "tests/support/ProcessSupport.h"
#include "tests/support/TempDir.h"

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;
using namespace testing_support;

static void expectContains(const std::string& text, const Paths& parts) {
    for (const std::string& part : parts)
        EXPECT_NE(text.find(part), std::string::npos) << part << " not in\n" << text;
}

// The value of the first "key=" line of a desktop-style file.
static std::string keyValue(const std::string& file, const std::string& key) {
    std::istringstream lines(readAll(file));
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(key + "=", 0) == 0)
            return line.substr(key.size() + 1);
    return {};
}

// The Exec line "program [option...] %X" of |entry| with |options| after the program and its field
// code filled: %f and %u take the first operand only. Desktop entries pass each operand as one
// argument; Nemo writes each into the command line, inside its Quote if it has one.
static std::string execCommand(const std::string& entry,
                               const Paths& operands,
                               const std::string& options = " --action fav") {
    const std::string exec = keyValue(entry, "Exec");
    const size_t programEnd = exec.find(' '), codeAt = exec.rfind(' ') + 1;
    const std::string code = exec.substr(codeAt);
    const std::string nemoQuote = keyValue(entry, "Quote") == "double" ? "\"" : "";
    const bool nemo = fs::path(entry).extension() == ".nemo_action";
    const size_t count = code == "%F" || code == "%U"   ? operands.size()
                         : code == "%f" || code == "%u" ? 1
                                                        : 0;
    std::string command =
        exec.substr(0, programEnd) + options + exec.substr(programEnd, codeAt - 1 - programEnd);
    for (size_t i = 0; i < count; ++i)
        command += " " + (nemo ? nemoQuote + operands[i] + nemoQuote : quoted(operands[i]));
    return command;
}

class DesktopTreeTest : public ::testing::Test {
  protected:
    // A shell's environment with |bin| first on the PATH; hosts append their records to records_.
    std::string env(const std::string& bin) const {
        return "env -u PARLEY_APPLICATIONS_DIR PATH=" + quoted(bin + ":" + getenv("PATH")) +
               " PARLEY_HOST_RECORD_FILE=" + quoted(records_) + " ";
    }
    // Runs |command|, which shares files_. No host runs: the share launches Parley.app from the
    // folder its own bundle lies in, and that host reports the record it finds at start.
    void expectFilesShared(const std::string& bin, const std::string& command) {
        const std::string container = std::string(std::getenv("XDG_DATA_HOME")) +
                                      "/group-containers/P4RL3YSH4R.com.parleyapp.Parley/";
        fs::remove_all(container);
        fs::remove(records_);
        ASSERT_EQ(run(env(bin) + "PARLEY_HOST_ONCE=1 " + command + " 2>" + dir_.file("err")), 0)
            << command + "\n" + readAll(dir_.file("err"));
        platform::EventLoop::runUntil([&] { return !readAll(records_).empty(); },
                                      std::chrono::seconds(30));
        const std::string record = readAll(records_);
        const std::string start =
            "{\"event\":\"start\",\"type\":\"public.file-url\",\"entry\":"
            "\"favToParley\",\"paths\":[\"";
        EXPECT_EQ(record.substr(0, start.size()), start) << command + "\n" + record;
        for (const std::string name : {"notes 1.txt", "it's.jpg"}) {
            SCOPED_TRACE(name);
            EXPECT_NE(record.find(container + name + "\""), std::string::npos);
            // The host takes the files it is handed out of the container.
            EXPECT_FALSE(fs::exists(container + name));
        }
    }

    testing_support::TempDir dir_;
    const std::string records_ = dir_.file("records.jsonl");
    const Paths files_ = {dir_.writeText("notes 1.txt", "n"), dir_.writeText("it's.jpg", "j")};
};

class InstalledTreeTest : public DesktopTreeTest {
  protected:
    void SetUp() override {
        ASSERT_EQ(run("cmake --install " + quoted(PARLEY_BUILD_DIR) + " --prefix " +
                      quoted(dir_.file("prefix")) + " >" + dir_.file("log")),
                  0)
            << readAll(dir_.file("log"));
    }
    std::string data(const std::string& path) const { return dir_.file("prefix/share/" + path); }
};

// The entries are valid, complete and translated; each integration shares with the installed host.
TEST_F(InstalledTreeTest, EntriesAreValidAndEachIntegrationSharesWithTheInstalledHost) {
    for (const std::string folder : {"applications", "Thunar/sendto"})
        for (const auto& entry : fs::directory_iterator(data(folder)))
            EXPECT_EQ(run("desktop-file-validate " + quoted(entry.path())), 0) << entry;
    const std::string scheme = data("applications/com.parleyapp.Parley.ParleyShare.desktop");
    const std::string kio = data("kio/servicemenus/parley-share.desktop");
    const std::string nemo = data("nemo/actions/parley-share.nemo_action");
    EXPECT_EQ(
        Paths({keyValue(scheme, "MimeType"), keyValue(scheme, "NoDisplay"), keyValue(kio, "Type"),
               keyValue(kio, "MimeType"), keyValue(kio, "Actions"), keyValue(kio, "Exec"),
               keyValue(nemo, "Selection"), keyValue(nemo, "Extensions"), keyValue(nemo, "Exec")}),
        Paths({"x-scheme-handler/parley-share;", "true", "Service", "all/all;", "shareToParley;",
               "parley-share %F", "notnone", "any;", "parley-share %F"}));
    expectContains(readAll(kio), {"\n[Desktop Action shareToParley]\n"});
    for (const std::string& file : {scheme, kio, nemo, data("Thunar/sendto/parley-share.desktop"),
                                    data("nautilus-python/extensions/parley-share.py")})
        expectContains(readAll(file), {"Share to Parley", "Mit Parley teilen",
                                       "Partager avec Parley", "Compartir con Parley"});
    EXPECT_EQ(run("appstreamcli validate --no-net " +
                  data("metainfo/com.parleyapp.Parley.ParleyShare.metainfo.xml")),
              0);
    const auto icon = platform::Bitmap::readPNG(data("icons/hicolor/48x48/apps/parley-share.png"));
    ASSERT_TRUE(icon);
    EXPECT_TRUE(fs::exists(data("icons/hicolor/scalable/apps/parley-share.svg")));
    // The front bubble's blue, drawn to the full size.
    EXPECT_EQ(48, icon->pixelWidth());
    EXPECT_GT(icon->pixelAt(8, 20).b, 200);

    // Nautilus's side of its extension is played by tests/desktop/nautilus_menu.py.
    for (const std::string entry :
         {"kio/servicemenus/parley-share.desktop", "Thunar/sendto/parley-share.desktop",
          "nemo/actions/parley-share.nemo_action"})
        expectFilesShared(dir_.file("prefix/bin"), execCommand(data(entry), files_));
    expectFilesShared(dir_.file("prefix/bin"),
                      "LANGUAGE= LC_ALL= LANG=de_DE.UTF-8 python3 " PARLEY_SOURCE_DIR
                      "/tests/desktop/nautilus_menu.py " +
                          quoted(data("nautilus-python/extensions/parley-share.py")) + " " +
                          quoted(files_[0]) + " " + quoted(files_[1]) + " >" + dir_.file("menu"));
    EXPECT_EQ(readAll(dir_.file("menu")), "0\nMit Parley teilen\n");

    // The host is started by its bus name from the installed service file, on a private bus that
    // finds services under the prefix; the browser's link then finds it running, and a broken link
    // is a usage error.
    fs::remove(records_);
    const std::string entry = data("applications/com.parleyapp.Parley.ParleyShare.desktop");
    const std::string script = R"(bus="dbus-send --session --print-reply"
$bus --dest=com.parleyapp.Parley / org.freedesktop.DBus.Peer.Ping >/dev/null || exit 90
eval "$1"; a=$?; eval "$2"; b=$?
for i in $(seq 300); do [ $(wc -l <"$3") -ge 2 ] && break; sleep 0.1; done
kill $($bus=literal --dest=org.freedesktop.DBus /org/freedesktop/DBus \
  org.freedesktop.DBus.GetConnectionUnixProcessID string:com.parleyapp.Parley | awk '{print $2}')
[ $a$b = 064 ])";
    const std::string link = "parley-share:https%3A%2F%2Fexample.org%2";
    EXPECT_EQ(
        run(env(dir_.file("prefix/bin")) + "XDG_DATA_DIRS=" + data("") +
            " dbus-run-session -- sh -c " + quoted(script) + " sh " +
            quoted(execCommand(entry, {link + "Fa%3Fb%3Dc%26d%3D%25C3%25A9"})) + " " +
            quoted(execCommand(entry, {link})) + " " + quoted(records_) + " 2>" + dir_.file("err")),
        0)
        << readAll(dir_.file("err"));
    const std::string lines = readAll(records_);
    EXPECT_EQ(lines.substr(lines.find('\n') + 1),
              "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
              "\"url\":\"https://example.org/a?b=c&d=%C3%A9\"}\n");
}

// The packages: their control fields and files, and lintian finds nothing but the warnings kept
// (no bug closed by a first upload; no manual pages: --help documents both programs). The main
// package's unpacked tree shares with its own host.
TEST_F(DesktopTreeTest, DebianPackagesPassLintianAndShareFromTheirTree) {
    if (run("command -v dpkg-shlibdeps") != 0)
        GTEST_SKIP() << "needs dpkg-dev";
    ASSERT_EQ(run("cd " + dir_.path() +
                  " && cpack -G DEB --config " PARLEY_BUILD_DIR
                  "/CPackConfig.cmake -B . >log 2>&1 && for p in parley-share parley-share-kde; do "
                  "dpkg-deb -f ${p}_*.deb >$p.fields && dpkg-deb -c ${p}_*.deb >$p.contents; "
                  "done && dpkg-deb -x parley-share_*.deb root"),
              0)
        << readAll(dir_.file("log"));
    expectContains(
        readAll(dir_.file("parley-share.fields")),
        {"Package: parley-share\n", "Version: 0.1.0-1\n", "Section: net\n", "Priority: optional\n",
         "Recommends: python3-nautilus\n", "libqt6core6", "libqt6svg6", "libplist", "libc6"});
    const std::string contents = readAll(dir_.file("parley-share.contents"));
    expectContains(contents,
                   {" ./usr/bin/parley-share -> ", " ./usr/bin/parley-host -> ",
                    "/parley/Parley.app/Contents/PlugIns/ParleyShare.appex/Contents/"
                    "MacOS/parley-share\n",
                    " ./usr/share/applications/com.parleyapp.Parley.ParleyShare.desktop\n",
                    " ./usr/share/doc/parley-share/copyright\n",
                    " ./usr/share/doc/parley-share/changelog.Debian.gz\n"});
    EXPECT_EQ(contents.find("parleyshareplugin"), std::string::npos);
    expectContains(readAll(dir_.file("parley-share-kde.fields")),
                   {"Package: parley-share-kde\n", "Depends: parley-share (= 0.1.0-1), ",
                    "libkf5purpose5", "libqt5core5a", "Section: kde\n"});
    expectContains(readAll(dir_.file("parley-share-kde.contents")),
                   {" ./usr/lib/x86_64-linux-gnu/qt5/plugins/kf5/purpose/parleyshareplugin.so\n",
                    " ./usr/share/doc/parley-share-kde/copyright\n",
                    " ./usr/share/doc/parley-share-kde/changelog.Debian.gz\n"});
    EXPECT_EQ(run("cd " + dir_.path() + " && lintian *.deb >found 2>/dev/null; status=$?; " +
                  "LC_ALL=C sort found >lintian; exit $status"),
              0);
    EXPECT_EQ(readAll(dir_.file("lintian")),
              "W: parley-share-kde: initial-upload-closes-no-bugs "
              "[usr/share/doc/parley-share-kde/changelog.Debian.gz:1]\n"
              "W: parley-share: initial-upload-closes-no-bugs "
              "[usr/share/doc/parley-share/changelog.Debian.gz:1]\n"
              "W: parley-share: no-manual-page [usr/bin/parley-host]\n"
              "W: parley-share: no-manual-page [usr/bin/parley-share]\n");
    const std::string root = dir_.file("root");
    const std::string host =
        keyValue(root + "/usr/share/dbus-1/services/com.parleyapp.Parley.service", "Exec");
    EXPECT_EQ("/usr/lib/", host.substr(0, 9));
    EXPECT_TRUE(fs::exists(root + host)) << host;
    expectFilesShared(root + "/usr/bin",
                      "parley-share --action fav " + quoted(files_[0]) + " " + quoted(files_[1]));
}

// Thunar starts one parley-share per selected folder and one for the files, at once, each from
// its entry's Exec line: one sheet shows, and its click hands everything over. A process that
// comes once that sheet is up shows its own beside it, not on top of it.
TEST_F(DesktopTreeTest, ThunarsProcessesForOneSelectionShowOneSheet) {
    if (run("command -v Xvfb && command -v xdotool >/dev/null") != 0)
        GTEST_SKIP() << "needs Xvfb and xdotool";
    const std::string folder = dir_.file("folder");
    fs::create_directories(folder);
    const std::string entry = PARLEY_SOURCE_DIR "/desktop/thunar/parley-share.desktop";
    // Sheets are found by title; the sheet that gathered is the first shown. Every wait gives up
    // after 10 to 30 seconds, every program after 30.
    const std::string script = R"sh(sheets() { xdotool search --onlyvisible --name '^Parley$'; }
eval "timeout 30 $1" & a=$!; eval "timeout 30 $2" & b=$!
w=$(timeout 30 xdotool search --sync --onlyvisible --name '^Parley$' | head -n 1)
for i in $(seq 200); do kill -0 $a 2>/dev/null && kill -0 $b 2>/dev/null || break; sleep 0.05; done
if kill -0 $a 2>/dev/null; then g=$a; j=$b; else g=$b; j=$a; fi
wait $j; echo "joined $?"; echo "sheets $(sheets | wc -l)"
eval "timeout 30 $3" & c=$!
for i in $(seq 200); do [ $(sheets | wc -l) -ge 2 ] && break; sleep 0.05; done
l=$(sheets | grep -vx "$w")
eval $(xdotool getwindowgeometry --shell $w); x=$X; y=$Y; eval $(xdotool getwindowgeometry --shell $l)
echo "beside $((X - x)) $((Y - y))"
xdotool mousemove --window $l 311 331 click 1; wait $c; echo "late $?"
xdotool mousemove --window $w 132 266 click 1; wait $g; echo "gathered $?")sh";
    auto thunar = [&](const Paths& operands) { return quoted(execCommand(entry, operands, "")); };
    expectFilesShared(
        PARLEY_BUILD_DIR "/bin",
        onPrivateDisplay("bash -c " + quoted(script) + " sh " + thunar({folder}) + " " +
                         thunar(files_) + " " + thunar({dir_.writeText("late.txt", "l")})) +
            " >" + dir_.file("out"));
    EXPECT_EQ(readLines(dir_.file("out")),
              Paths({"joined 0", "sheets 1", "beside 24 24", "late 2", "gathered 0"}));
    EXPECT_NE(readAll(records_).find("/P4RL3YSH4R.com.parleyapp.Parley/folder\""),
              std::string::npos);
}

// On X11 the sheet is a dialog with the entries' icon (set a moment after the window shows, given
// 5 s), of the class that their StartupWMClass names.
TEST_F(DesktopTreeTest, TheSheetIsADialogOfTheClassTheEntriesName) {
    if (run("command -v Xvfb && command -v xdotool && command -v xprop >/dev/null") != 0)
        GTEST_SKIP() << "needs Xvfb, xdotool and xprop";
    const std::string script = R"sh(timeout 30 "$0" --url https://example.org/ & p=$!
w=$(timeout 30 xdotool search --sync --onlyvisible --name '^Parley$' | head -n 1)
for i in $(seq 100); do xprop -id "$w" _NET_WM_ICON | grep -q Icon && break; sleep 0.05; done
xprop -id "$w" WM_CLASS _NET_WM_WINDOW_TYPE; xprop -id "$w" _NET_WM_ICON | head -n 1; kill $p)sh";
    ASSERT_EQ(run(onPrivateDisplay("sh -c " + quoted(script) + " " +
                                   quoted(PARLEY_BUILD_DIR "/bin/parley-share")) +
                  " >" + dir_.file("out")),
              0);
    const std::string scheme =
        PARLEY_SOURCE_DIR "/desktop/com.parleyapp.Parley.ParleyShare.desktop";
    for (const std::string& entry :
         Paths{scheme, PARLEY_SOURCE_DIR "/desktop/thunar/parley-share.desktop"})
        EXPECT_EQ(keyValue(entry, "StartupWMClass"), "parley-share") << entry;
    EXPECT_EQ(readLines(dir_.file("out")),
              Paths({"WM_CLASS(STRING) = \"parley-share\", \"" +
                         keyValue(scheme, "StartupWMClass") + "\"",
                     "_NET_WM_WINDOW_TYPE(ATOM) = _NET_WM_WINDOW_TYPE_DIALOG, "
                     "_NET_WM_WINDOW_TYPE_NORMAL",
                     "_NET_WM_ICON(CARDINAL) = \tIcon (48 x 48):"}));
}

// On Wayland (a headless Weston) the sheet names its desktop entry as its app id and cannot be
// resized, which the compositor's protocol log of the program shows.
TEST_F(DesktopTreeTest, OnWaylandTheSheetNamesItsDesktopEntry) {
    if (run("command -v weston >/dev/null") != 0)
        GTEST_SKIP() << "needs weston";
    const std::string runtime = dir_.file("runtime");
    fs::create_directories(runtime);
    fs::permissions(runtime, fs::perms::owner_all);
    const std::string script = R"sh(weston --backend=headless-backend.so --socket=sheet & w=$!
for i in $(seq 100); do [ -S "$XDG_RUNTIME_DIR/sheet" ] && break; sleep 0.05; done
WAYLAND_DEBUG=1 WAYLAND_DISPLAY=sheet timeout 30 "$0" --url https://example.org/ 2>"$1" & p=$!
for i in $(seq 200); do grep -q set_app_id "$1" && break; sleep 0.05; done
kill $p $w; sed -n 's/.*-> xdg_toplevel@[0-9]*\.\(set_[a-z_]*(.*)\)$/\1/p' "$1")sh";
    ASSERT_EQ(run("env -u QT_QPA_PLATFORM -u DISPLAY XDG_RUNTIME_DIR=" + quoted(runtime) +
                  " sh -c " + quoted(script) + " " + quoted(PARLEY_BUILD_DIR "/bin/parley-share") +
                  " " + quoted(dir_.file("log")) + " >" + dir_.file("out") + " 2>/dev/null"),
              0);
    EXPECT_EQ(readLines(dir_.file("out")),
              Paths({"set_min_size(376, 370)", "set_max_size(376, 370)", "set_title(\"Parley\")",
                     "set_app_id(\"com.parleyapp.Parley.ParleyShare\")"}));
}
