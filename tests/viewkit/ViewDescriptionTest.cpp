#include "viewkit/ViewDescriptionSExt.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>

#include "platform/ui/ImageView.h"
#include "platform/ui/Window.h"
#include "viewkit/PLSOutlineButton.h"
#include "viewkit/PLSTextView.h"
#include "viewkit/ViewQuerySExt.h"

using platform::NSMakeRect;
using platform::View;

namespace {

std::string address(const void* object) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", object);
    return text;
}

// In a window: row > (button > its title label, image view with an unnamed image, text view).
class ViewDescription : public ::testing::Test {
  protected:
    void SetUp() override {
        button->setTitle("Send");
        image->setImage(platform::Image::imageWithSize({4, 4}, false, nullptr));
        notes->setString("notes");
        for (const auto& view : std::vector<std::shared_ptr<View>>{button, image, notes})
            row->addSubview(view);
        window.setContentView(row);
    }

    platform::Window window{NSMakeRect(100, 200, 200, 100), "Parley"};
    std::shared_ptr<View> row = std::make_shared<View>();
    std::shared_ptr<PLSOutlineButton> button = std::make_shared<PLSOutlineButton>();
    std::shared_ptr<platform::ImageView> image =
        std::make_shared<platform::ImageView>(NSMakeRect(9, 1, 16.5, 6));
    std::shared_ptr<PLSTextView> notes = std::make_shared<PLSTextView>();
};

TEST_F(ViewDescription, OneLinePerViewIndentedByLevel) {
    button->setWantsLayer(true);
    image->setHidden(true);
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
    EXPECT_EQ(0u, tree.find("\n\t<NSView: "));
    EXPECT_EQ(5, std::count(tree.begin(), tree.end(), '\n')) << "no line but the views'";
}

TEST_F(ViewDescription, RootDescClimbsAtMostToTheTopmostAncestor) {
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

TEST_F(ViewDescription, WindowsAndSubviewsOfAClass) {
    EXPECT_EQ("<NSWindow: " + address(&window) +
                  "> controller (null) title Parley frame {{100, 200}, {200, 100}} "
                  "firstRespondser <NSWindow: " +
                  address(&window) + ">\n" + SExt::debugDescription(*row) + "\n\n",
              SExt::rootDesc());
    EXPECT_EQ(button, SExt::firstSubviewOfClass<View>(*row));
    EXPECT_EQ(notes, SExt::firstSubviewOfClass<platform::TextView>(*row));
    EXPECT_EQ(nullptr, SExt::firstSubviewOfClass<platform::TextField>(*row)) << "a grandchild's";
}

}  // namespace
