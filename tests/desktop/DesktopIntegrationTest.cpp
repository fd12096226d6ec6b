// The installed tree: cmake --install into a temporary prefix, then each integration's own
// command, filled in as its file manager or browser would, runs the installed parley-share,
// which wakes the installed host. The package built by cpack does the same from its unpacked
// tree. Nobody clicks here: "--action fav" goes right after the program's name.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>

#include "platform/core/EventLoop.h"
#include "platform/ui/Bitmap.h"
#include "tests/support/ProcessSupport.h"
#include "tests/support/TempDir.h"

namespace {

namespace fs = std::filesystem;
using Paths = std::vector<std::string>;

using testing_support::readAll;
using testing_support::run;
const auto shellQuoted = testing_support::quoted;

void expectContains(const std::string& text, const std::vector<std::string>& parts) {
    for (const std::string& part : parts)
        EXPECT_NE(text.find(part), std::string::npos) << part << " not in\n" << text;
}

// The value of the first "key=" line of a desktop-style file.
std::string keyValue(const std::string& file, const std::string& key) {
    std::istringstream lines(readAll(file));
    for (std::string line; std::getline(lines, line);)
        if (line.rfind(key + "=", 0) == 0)
            return line.substr(key.size() + 1);
    return {};
}

// The Exec line of |entry| with its field code filled: %f and %u take the first operand only.
// Desktop entries pass each operand as one argument; Nemo writes each into the command line,
// inside its Quote if it has one.
std::string execCommand(const std::string& entry, const Paths& operands) {
    const bool nemo = fs::path(entry).extension() == ".nemo_action";
    const std::string nemoQuote = keyValue(entry, "Quote") == "double" ? "\"" : "";
    std::istringstream words(keyValue(entry, "Exec"));
    std::string command;
    for (std::string word; words >> word;) {
        if (word.size() != 2 || word[0] != '%') {
            command += command.empty() ? word + " --action fav" : " " + word;
            continue;
        }
        for (const std::string& operand : operands) {
            command += " " + (nemo ? nemoQuote + operand + nemoQuote : shellQuoted(operand));
            if (word == "%f" || word == "%u")
                break;
        }
    }
    return command;
}

class DesktopTreeTest : public ::testing::Test {
  protected:
    // Shares two files through |commandFor| (given their paths) with |bin| first on the PATH.
    // No host runs: the share launches Parley.app from the folder its own bundle lies in, and
    // that host reports the record it finds at start.
    void expectFilesShared(const std::string& bin,
                           const std::function<std::string(const Paths&)>& commandFor) {
        const std::string container = std::string(std::getenv("XDG_DATA_HOME")) +
                                      "/group-containers/P4RL3YSH4R.com.parleyapp.Parley/";
        const std::string records = dir_.file("records.jsonl");
        fs::remove_all(container);
        fs::remove(records);
        const std::string command =
            commandFor({dir_.writeText("notes 1.txt", "n"), dir_.writeText("it's.jpg", "j")});
        ASSERT_EQ(run("env -u PARLEY_APPLICATIONS_DIR PATH=" +
                      shellQuoted(bin + ":" + std::getenv("PATH")) +
                      " PARLEY_HOST_ONCE=1 PARLEY_HOST_RECORD_FILE=" + shellQuoted(records) + " " +
                      command + " 2>" + shellQuoted(dir_.file("share.err"))),
                  0)
            << command << "\n"
            << readAll(dir_.file("share.err"));
        platform::EventLoop::runUntil([&] { return !readAll(records).empty(); },
                                      std::chrono::seconds(30));
        const std::string record = readAll(records);
        EXPECT_EQ(record.rfind("{\"event\":\"start\",\"type\":\"public.file-url\","
                               "\"entry\":\"favToParley\",\"paths\":[",
                               0),
                  0u)
            << command << "\n"
            << record;
        for (const std::string name : {"notes 1.txt", "it's.jpg"}) {
            EXPECT_NE(record.find("\"" + container + name + "\""), std::string::npos) << name;
            EXPECT_TRUE(fs::exists(container + name)) << name;
        }
    }

    testing_support::TempDir dir_;
};

class InstalledTreeTest : public DesktopTreeTest {
  protected:
    void SetUp() override {
        ASSERT_EQ(
            run("cmake --install " + shellQuoted(PARLEY_BUILD_DIR) + " --prefix " +
                shellQuoted(dir_.file("prefix")) + " >" + shellQuoted(dir_.file("install.log"))),
            0)
            << readAll(dir_.file("install.log"));
    }
    std::string data(const std::string& path) const { return dir_.file("prefix/share/" + path); }
    const std::string bin_ = dir_.file("prefix/bin");
};

TEST_F(InstalledTreeTest, EntriesAreValidCompleteAndTranslated) {
    for (const std::string folder : {"applications", "Thunar/sendto"})
        for (const auto& entry : fs::directory_iterator(data(folder)))
            EXPECT_EQ(run("desktop-file-validate " + shellQuoted(entry.path())), 0) << entry;
    const std::string scheme = data("applications/com.parleyapp.Parley.ParleyShare.desktop");
    EXPECT_EQ(keyValue(scheme, "MimeType"), "x-scheme-handler/parley-share;");
    EXPECT_EQ(keyValue(scheme, "NoDisplay"), "true");
    const std::string kio = data("kio/servicemenus/parley-share.desktop");
    EXPECT_EQ(keyValue(kio, "Type") + " " + keyValue(kio, "MimeType"), "Service all/all;");
    EXPECT_NE(readAll(kio).find("[Desktop Action " + keyValue(kio, "Actions").substr(0, 13) + "]"),
              std::string::npos);
    const std::string nemo = data("nemo/actions/parley-share.nemo_action");
    EXPECT_EQ(keyValue(nemo, "Selection") + " " + keyValue(nemo, "Extensions"), "notnone any;");
    for (const std::string& entry : {kio, nemo})
        EXPECT_NE(keyValue(entry, "Exec").find(" %F"), std::string::npos) << entry;
    for (const std::string& file : {scheme, kio, nemo, data("Thunar/sendto/parley-share.desktop"),
                                    data("nautilus-python/extensions/parley-share.py")})
        expectContains(readAll(file), {"Share to Parley", "Mit Parley teilen",
                                       "Partager avec Parley", "Compartir con Parley"});

    EXPECT_EQ(run("appstreamcli validate --no-net " +
                  shellQuoted(data("metainfo/com.parleyapp.Parley.ParleyShare.metainfo.xml"))),
              0);
    EXPECT_EQ(keyValue(data("dbus-1/services/com.parleyapp.Parley.service"), "Name"),
              "com.parleyapp.Parley");
    EXPECT_TRUE(fs::exists(data("icons/hicolor/scalable/apps/parley-share.svg")));
    const auto icon = platform::Bitmap::readPNG(data("icons/hicolor/48x48/apps/parley-share.png"));
    ASSERT_TRUE(icon);
    EXPECT_EQ(icon->pixelWidth(), 48);
    EXPECT_GT(icon->pixelAt(8, 20).b, 200);  // the front bubble's blue, drawn to the full size
}

// Nautilus's side of its extension is played by tests/desktop/nautilus_menu.py.
TEST_F(InstalledTreeTest, FileManagerEntriesShareWithTheInstalledHost) {
    for (const std::string entry :
         {"kio/servicemenus/parley-share.desktop", "Thunar/sendto/parley-share.desktop",
          "nemo/actions/parley-share.nemo_action"}) {
        SCOPED_TRACE(entry);
        expectFilesShared(bin_,
                          [&](const Paths& files) { return execCommand(data(entry), files); });
    }
    expectFilesShared(bin_, [&](const Paths& files) {
        return "LANGUAGE= LC_ALL= LANG=de_DE.UTF-8 python3 " +
               shellQuoted(PARLEY_SOURCE_DIR "/tests/desktop/nautilus_menu.py") + " " +
               shellQuoted(data("nautilus-python/extensions/parley-share.py")) + " " +
               shellQuoted(files[0]) + " " + shellQuoted(files[1]) + " >" +
               shellQuoted(dir_.file("menu"));
    });
    EXPECT_EQ(readAll(dir_.file("menu")), "0\nMit Parley teilen\n");
}

// The host is started by its bus name from the installed service file, on a private bus that
// finds services under the prefix; the browser's link then finds it running. A broken link is a
// usage error.
TEST_F(InstalledTreeTest, SchemeHandlerHandsALinkToTheBusActivatedHost) {
    const std::string entry = data("applications/com.parleyapp.Parley.ParleyShare.desktop");
    const std::string records = dir_.file("records.jsonl");
    const std::string script =
        "dbus-send --session --print-reply --dest=com.parleyapp.Parley / "
        "org.freedesktop.DBus.Peer.Ping >/dev/null || exit 90\n" +
        execCommand(entry,
                    {"parley-share:https%3A%2F%2Fexample.org%2Fa%3Fb%3Dc%26d%3D%25C3%25A9"}) +
        "; status=$?\n" + execCommand(entry, {"parley-share:https%3A%2F%2Fexample.org%2"}) +
        "; [ $? = 64 ] || status=91\nfor i in $(seq 300); do [ \"$(wc -l <" + shellQuoted(records) +
        ")\" -ge 2 ] && break; sleep 0.1; done\n"
        "kill $(dbus-send --session --print-reply=literal --dest=org.freedesktop.DBus "
        "/org/freedesktop/DBus org.freedesktop.DBus.GetConnectionUnixProcessID "
        "string:com.parleyapp.Parley | awk '{print $2}')\nexit $status\n";
    EXPECT_EQ(
        run("env -u PARLEY_APPLICATIONS_DIR PATH=" + shellQuoted(bin_ + ":" + getenv("PATH")) +
            " XDG_DATA_DIRS=" + shellQuoted(data("")) +
            " PARLEY_HOST_RECORD_FILE=" + shellQuoted(records) + " dbus-run-session -- sh -c " +
            shellQuoted(script) + " 2>" + shellQuoted(dir_.file("err"))),
        0)
        << readAll(dir_.file("err"));
    const std::string lines = readAll(records);
    EXPECT_EQ(lines.substr(lines.find('\n') + 1),
              "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
              "\"url\":\"https://example.org/a?b=c&d=%C3%A9\"}\n");
}

// The package: its control fields and files; its unpacked tree shares with its own host.
TEST_F(DesktopTreeTest, DebianPackageListsItsDependenciesAndSharesFromItsTree) {
    if (run("command -v cpack && command -v dpkg-deb && command -v dpkg-shlibdeps") != 0)
        GTEST_SKIP() << "needs cpack, dpkg-deb and dpkg-shlibdeps";
    ASSERT_EQ(run("cd " + shellQuoted(dir_.path()) + " && cpack -G DEB --config " +
                  shellQuoted(std::string(PARLEY_BUILD_DIR) + "/CPackConfig.cmake") +
                  " -B . >cpack.log 2>&1 && dpkg-deb -f *.deb >fields && dpkg-deb -c *.deb " +
                  ">contents && dpkg-deb -x *.deb root"),
              0)
        << readAll(dir_.file("cpack.log"));
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
    EXPECT_EQ(host.rfind("/usr/lib/", 0), 0u) << host;
    EXPECT_TRUE(fs::exists(root + host)) << host;
    expectFilesShared(root + "/usr/bin", [](const Paths& files) {
        return "parley-share --action fav " + shellQuoted(files[0]) + " " + shellQuoted(files[1]);
    });
}

}  // namespace
