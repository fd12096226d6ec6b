// The controller hands itself to closures through a shared pointer, so create() is its only
// maker: no default construction, no copies, and what create() makes works from the start.
#include <type_traits>

#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

TEST_F(ShareTest, ControllerComesOnlyFromItsFactory) {
    EXPECT_FALSE(std::is_default_constructible_v<ShareViewController>);
    EXPECT_FALSE(std::is_copy_constructible_v<ShareViewController>);
    EXPECT_FALSE(std::is_move_constructible_v<RecordingController>);

    auto controller = ShareViewController::create();
    controller->setExtensionContext(std::make_shared<platform::ExtensionContext>(
        std::vector<std::shared_ptr<platform::ExtensionItem>>{}));
    ASSERT_TRUE(controller->view());
    // The row's closures reach the controller through the owner create() gave it.
    controller->favToParleyText()->mouseDown(
        *platform::Event::mouseEvent(platform::EventType::LeftMouseDown, {60, 100}, 1));
    EXPECT_TRUE(controller->favHighlighted());
}

}  // namespace
}  // namespace share_test
