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

// The Exec line "program %X" of |entry| with its field code filled: %f and %u take the first
// operand only. Desktop entries pass each operand as one argument; Nemo writes each into the
// command line, inside its Quote if it has one.
static std::string execCommand(const std::string& entry, const Paths& operands) {
    const std::string exec = keyValue(entry, "Exec"), code = exec.substr(exec.find(' ') + 1);
    const std::string nemoQuote = keyValue(entry, "Quote") == "double" ? "\"" : "";
    const bool nemo = fs::path(entry).extension() == ".nemo_action";
    const size_t count = code == "%F" || code == "%U"   ? operands.size()
                         : code == "%f" || code == "%u" ? 1
                                                        : 0;
    std::string command = exec.substr(0, exec.find(' ')) + " --action fav";
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

// The package: its control fields and files; its unpacked tree shares with its own host.
TEST_F(DesktopTreeTest, DebianPackageListsItsDependenciesAndSharesFromItsTree) {
    if (run("command -v dpkg-shlibdeps") != 0)
        GTEST_SKIP() << "needs dpkg-dev";
    ASSERT_EQ(run("cd " + dir_.path() +
                  " && cpack -G DEB --config " PARLEY_BUILD_DIR
                  "/CPackConfig.cmake -B . >log 2>&1 && dpkg-deb -f *.deb >fields && "
                  "dpkg-deb -c *.deb >contents && dpkg-deb -x *.deb root"),
              0)
        << readAll(dir_.file("log"));
    expectContains(readAll(dir_.file("fields")),
                   {"Package: parley-share\n", "Recommends: python3-nautilus\n", "libqt6core6",
                    "libqt6svg6", "libplist", "libc6"});
    expectContains(readAll(dir_.file("contents")),
                   {" ./usr/bin/parley-share -> ", " ./usr/bin/parley-host -> ",
                    "/parley/Parley.app/Contents/PlugIns/ParleyShare.appex/Contents/MacOS/"
                    "parley-share\n",
                    " ./usr/share/applications/com.parleyapp.Parley.ParleyShare.desktop\n"});
    const std::string root = dir_.file("root");
    const std::string host =
        keyValue(root + "/usr/share/dbus-1/services/com.parleyapp.Parley.service", "Exec");
    EXPECT_EQ("/usr/lib/", host.substr(0, 9));
    EXPECT_TRUE(fs::exists(root + host)) << host;
    expectFilesShared(root + "/usr/bin",
                      "parley-share --action fav " + quoted(files_[0]) + " " + quoted(files_[1]));
}
