#include "gallery/capture_writer.h"

#include "nimbit/filesystem/file_operations.h"
#include "tests/foundation/temp_folder.h"
#include "tests/support/offscreen_test.h"

#include <chrono>
#include <thread>

using namespace nimbit;
using namespace nimbit::ui;

namespace {

class CaptureWriterTest : public OffscreenTest {
protected:
    // A picture of its own size, so that each file can be told apart.
    static bitmap Picture(int width) {
        bitmap image;
        image.create({width, 3}, image_alpha::alpha);
        return image;
    }
    // Whether path holds the whole picture of that width.
    static bool Whole(const file_path& path, int width) {
        bitmap back;
        return back.load_image(path) && back.get_size() == (ivec2{width, 3});
    }

    temp_folder tmp;
};

} // namespace

// More captures than the queue holds, one of them into a folder that cannot be made: the others are
// written in order into a folder created for them, and each is listed only once it is whole. (That
// destruction finishes the queue is checked through the controller, in the host tests.)
TEST_F(CaptureWriterTest, ListsEachCaptureOnceItIsWholeAndDropsFailuresSilently) {
    ASSERT_TRUE(write_text(tmp / "blocked", "a file where the folder should be"));
    CaptureWriter writer;
    std::vector<file_path> queued;
    for (int width = 1; width <= 6; ++width) {
        const file_path path = (width == 4 ? tmp / "blocked" : tmp / "new/Capture")
                                   .append(file_path(std::to_string(width) + ".png"));
        writer.Write(Picture(width), path);
        if (width != 4)
            queued.push_back(path);
    }
    std::vector<file_path> listed;
    for (bool busy = true; busy;) {
        busy = writer.Busy(); // read first: once idle, the next take has every capture
        for (const file_path& path : writer.TakeWritten()) {
            EXPECT_TRUE(Whole(path, std::stoi(path.leaf(false)))) << path.to_string();
            listed.push_back(path);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    writer.Flush();
    EXPECT_TRUE(writer.TakeWritten().empty());
    EXPECT_EQ(listed, queued);
}
