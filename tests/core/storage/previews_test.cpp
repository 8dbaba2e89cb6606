#include <gtest/gtest.h>
#include <optional>

#include "core/storage/data_layout.h"
#include "core/storage/videos_preview_manager.h"
#include "fakes/fake_images.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"

namespace tembrix {
namespace {

// A video whose frames have the requested size, or that cannot be read.
class OneVideo final : public Media {
  public:
    Result<MediaInfo> probe(const std::filesystem::path&) override { return error; }
    Result<FramePlace> framePlace(const std::filesystem::path&, double) override { return error; }
    Result<ImageBuffer> frame(const std::filesystem::path&, double) override { return error; }
    Result<ImageBuffer> thumbnail(const std::filesystem::path& file, double seconds,
                                  Size bounds) override {
        if (whileDecoding)
            whileDecoding();
        if (file.extension() != ".mp4" || seconds != 1.0)
            return error;
        return ImageBuffer(static_cast<int>(bounds.width), static_cast<int>(bounds.height) / 2);
    }

    std::function<void()> whileDecoding;
    const Error error{"media", 1, "not a video"};
};

struct Previews : testing::Test {
    TempFolder folder;
    OneVideo media;
    FakeImageCodec images;
    VirtualScheduler scheduler;
    VideosPreviewManager previews{media, images, scheduler, folder.directories()};
};

TEST_F(Previews, AreStoredAndHandedOverOnTheMainThread) {
    std::filesystem::create_directories(folder.directories().temporary / layout::previewFolder);
    std::shared_ptr<const ImageBuffer> picture;
    previews.makePreview("/videos/match.final.mp4", [&](const auto& result) {
        EXPECT_TRUE(scheduler.isMain());
        picture = result.value();
    });
    EXPECT_FALSE(picture);
    scheduler.run();
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->width, 200);
    const auto file = previews.previewFile("/videos/match.final.mp4");
    EXPECT_EQ(file.filename(), "match.final@$@mp4.png");
    EXPECT_EQ(images.decode(toBytes(fileText(file))).value(), *picture);
}

TEST_F(Previews, AMissingFolderLosesOnlyTheFile) {
    bool shown = false;
    previews.makePreview("a.mp4", [&](const auto& result) { shown = result.ok(); });
    scheduler.run();
    EXPECT_TRUE(shown);
    std::optional<Error> failed;
    previews.makePreview("text.txt", [&](const auto& result) { failed = result.error(); });
    previews.makePreview("text.txt", {});
    scheduler.run();
    EXPECT_EQ(failed, media.error);
}

TEST_F(Previews, ADestroyedManagerNeitherStoresNorCompletes) {
    std::filesystem::create_directories(folder.directories().temporary / "Preview");
    auto other =
        std::make_unique<VideosPreviewManager>(media, images, scheduler, folder.directories());
    const auto file = other->previewFile("a.mp4");
    bool completed = false;
    other->makePreview("a.mp4", [&](const auto&) { completed = true; });
    media.whileDecoding = [&] { other.reset(); };
    scheduler.run();
    EXPECT_FALSE(completed);
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(Previews, NamesFollowTheVideo) {
    EXPECT_EQ(VideosPreviewManager::thumbnailName("/a.b/match"), "match");
    folder.write("clip.mp4", "x");
    folder.write("clip (1).mp4", "");
    EXPECT_EQ(VideosPreviewManager::uniqueName(folder.path(), "clip.mp4"), "clip (2).mp4");
    EXPECT_EQ(VideosPreviewManager::uniqueName(folder.path(), "new.mp4"), "new.mp4");
    EXPECT_FALSE(VideosPreviewManager::isEmptyFile(folder.path() / "clip.mp4"));
    EXPECT_TRUE(VideosPreviewManager::isEmptyFile(folder.path() / "clip (1).mp4"));
    EXPECT_FALSE(VideosPreviewManager::isEmptyFile(folder.path() / "missing.mp4"));
}

}  // namespace
}  // namespace tembrix
