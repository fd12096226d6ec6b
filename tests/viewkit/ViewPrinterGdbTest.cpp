#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <regex>
#include <sstream>

#include "tests/support/TempDir.h"

// gdb finds the printer in the program itself once the build folder is a safe auto-load path.
TEST(ViewPrinter, GdbPrintsAViewAndAPointerToOneAsTheTreeBelow) {
    if (std::system("command -v gdb > /dev/null 2>&1") != 0)
        GTEST_SKIP() << "gdb is not installed";
    testing_support::TempDir dir;
    ASSERT_EQ(
        0, std::system(("timeout 120 gdb -batch -nx -iex 'add-auto-load-safe-path " PARLEY_BUILD_DIR
                        "' -ex 'break viewTreeReady' -ex run -ex 'print *inspectedView' -ex "
                        "'print inspectedView' " PARLEY_VIEW_PRINTER_TARGET " > " +
                        dir.file("gdb.txt") + " 2>&1")
                           .c_str()));
    std::stringstream output;
    output << std::ifstream(dir.file("gdb.txt")).rdbuf();
    const std::string printed = std::regex_replace(output.str(), std::regex("0x[0-9a-f]+"), "0x");
    const std::string tree =
        "\n\t<PLSView: 0x> (1 subviews) wantsLayer 0 isOpaque 0 isHidden 0 bounds {{0, 0}, {200, "
        "100}} frame {{0, 0}, {200, 100}}\n\t\t<PLSOutlineButton: 0x> \"Send\" (1 subviews)";
    EXPECT_NE(std::string::npos, printed.find("$1 = " + tree)) << printed;
    EXPECT_NE(std::string::npos, printed.find("$2 = 0x" + tree)) << printed;
}
