// What AttachmentFiles.h promises, held against every port.

#include <gtest/gtest.h>

#include "tests/ports/Machine.h"

namespace zentavo::tests {
namespace {

class AttachmentFilesConformance : public MachineTest {
protected:
    /// A folder that no other test uses, on any port.
    const std::string folder = machine->random()->uuidText();
    const std::shared_ptr<platform::AttachmentFiles> files = machine->attachmentFiles();
};

TEST_P(AttachmentFilesConformance, WritesAttachesAndRemoves) {
    const auto path = files->write(folder, "image.jpg", std::string_view("a\0b", 3));
    ASSERT_TRUE(path) << path.error().message;
    EXPECT_TRUE(path->starts_with("/"));
    EXPECT_TRUE(path->ends_with("/" + folder + "/image.jpg")) << *path;
    const auto attachment = files->attach("picture", *path);
    ASSERT_TRUE(attachment) << attachment.error().message;
    EXPECT_EQ(*attachment, (platform::NotificationAttachment{"picture", *path}));

    const auto second = files->write(folder, "other.jpg", "c");
    ASSERT_TRUE(second) << "a folder may hold several";
    files->remove(*path);
    EXPECT_FALSE(files->attach("picture", *path));
    files->remove(*path); // gone is gone
    EXPECT_TRUE(files->attach("picture", *second));
    files->remove(*second);
}

TEST_P(AttachmentFilesConformance, LeavesWhatIsThereAsItIs) {
    const auto path = files->write(folder, "image.jpg", "first");
    ASSERT_TRUE(path);
    const auto again = files->write(folder, "image.jpg", "");
    ASSERT_FALSE(again);
    EXPECT_NE(again.error().message, "");
    EXPECT_TRUE(files->attach("picture", *path)) << "still with its content";
    files->remove(*path);
}

TEST_P(AttachmentFilesConformance, RefusesPathsForNamesAndFilesWithoutContent) {
    for (const char* name : {"", ".", "..", "a/b", "/etc"}) {
        EXPECT_FALSE(files->write(name, "image.jpg", "x")) << name;
        EXPECT_FALSE(files->write(folder, name, "x")) << name;
    }
    const auto empty = files->write(folder, "image.jpg", "");
    ASSERT_TRUE(empty) << empty.error().message;
    EXPECT_FALSE(files->attach("picture", *empty));
    files->remove(*empty);
    EXPECT_FALSE(files->attach("picture", "/"));
}

ZENTAVO_FOR_EACH_MACHINE(AttachmentFilesConformance);

} // namespace
} // namespace zentavo::tests
