#include <fstream>
#include <regex>
#include <sstream>

#include "platform/ui/ImageView.h"
#include "tests/support/TempDir.h"
#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSOutlineButton.h"
#include "viewkit/PLSTextView.h"
#include "viewkit/ViewDescriptionSExt.h"
#include "viewkit/ViewQuerySExt.h"

using platform::View;

static std::string address(const void* object) {
    return ::testing::PrintToString(object);
}

// In a window: row > (button > its title label, image view with an unnamed image, text view); one
// line per view, indented by level. The root description climbs at most to the topmost ancestor.
TEST(ViewDescription, OneLinePerViewIndentedByLevelUpToTheRoot) {
    platform::Window window{NSMakeRect(100, 200, 200, 100), "Parley"};
    auto row = std::make_shared<View>();
    auto button = std::make_shared<PLSOutlineButton>();
    auto image = std::make_shared<platform::ImageView>(NSMakeRect(9, 1, 16.5, 6));
    auto notes = std::make_shared<PLSTextView>();
    button->setTitle("Send");
    button->setWantsLayer(true);
    image->setImage(platform::Image::imageWithSize({4, 4}, false, nullptr));
    image->setHidden(true);
    notes->setString("notes");
    for (const auto& view : std::vector<std::shared_ptr<View>>{button, image, notes})
        row->addSubview(view);
    window.setContentView(row);
    EXPECT_EQ("\n<NSImageView: " + address(image.get()) +
                  "> (null)(0 subviews) wantsLayer 0 isOpaque 0 isHidden 1 bounds {{0, 0}, {16.5, "
                  "6}} frame {{9, 1}, {16.5, 6}}",
              SExt::selfDesc(*image));
    const std::string tree = SExt::debugDescription(*row);
    EXPECT_EQ("\n" + tree.substr(2, tree.find('\n', 1) - 2), SExt::selfDesc(*row));
    size_t at = 0;
    for (const std::string& line :
         {"\n\t<NSView: " + address(row.get()) + "> (3 subviews) wantsLayer 0",
          "\n\t\t<PLSOutlineButton: " + address(button.get()) +
              "> \"Send\" (1 subviews) wantsLayer 1 isOpaque 0 isHidden 0",
          "\n\t\t\t<NSTextField: " + address(button->titleLabel().get()) + "> Send(0 subviews)",
          "\n\t\t<NSImageView: " + address(image.get()),
          "\n\t\t<PLSTextView: " + address(notes.get()) + "> notes(0 subviews)"})
        EXPECT_NE(std::string::npos, at = tree.find(line, at)) << line << " in " << tree;
    EXPECT_EQ(5, std::count(tree.begin(), tree.end(), '\n')) << "no line but the views'";
    EXPECT_EQ("<NSWindow: " + address(&window) +
                  "> controller (null) title Parley frame {{100, 200}, {200, 100}} "
                  "firstRespondser <NSWindow: " +
                  address(&window) + ">\n" + tree + "\n\n",
              SExt::rootDesc());
    EXPECT_EQ(button, SExt::firstSubviewOfClass<View>(*row));
    EXPECT_EQ(nullptr, SExt::firstSubviewOfClass<platform::TextField>(*row)) << "a grandchild's";

    auto outer = std::make_shared<View>(NSMakeRect(0, 0, 300, 300));
    outer->addSubview(row);
    const View& label = *button->titleLabel();  // three levels below outer
    const View* const tops[] = {&label, &label, button.get(), row.get(), outer.get(), outer.get()};
    const int64_t levels[] = {-1, 0, 1, 2, 3, 10};
    for (int i = 0; i < 6; ++i)
        EXPECT_EQ(SExt::debugDescription(*tops[i]), SExt::rootDescWithLevel(label, levels[i]));
    EXPECT_EQ(SExt::debugDescription(*outer), SExt::rootDescWithLevel(label));
    EXPECT_EQ(SExt::debugDescription(*row), SExt::rootDescWithLevel2(label));
}

// gdb finds the printer in the program itself once the build folder is a safe auto-load path.
TEST(ViewPrinter, GdbPrintsAViewAndAPointerToOneAsTheTreeBelow) {
    if (std::system("command -v gdb >/dev/null") != 0)
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
