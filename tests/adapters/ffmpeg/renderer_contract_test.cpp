#include <functional>
#include <future>
#include <gtest/gtest.h>
#include <memory>
#include <thread>

#include "adapters/ffmpeg/ffmpeg_movie_renderer.h"
#include "fakes/fake_movie_renderer.h"
#include "fakes/temp_folder.h"
#include "fakes/virtual_scheduler.h"
#include "fixtures/variants.h"

namespace tembrix {
namespace {

namespace fs = std::filesystem;

// A renderer, and a function that lets runs of the fake succeed; the real one needs none.
struct Subject {
    std::shared_ptr<MovieRenderer> renderer;
    std::function<void()> letItSucceed = [] {};
    std::function<void()> settle = [] {};
};

Subject real() {
    return {std::make_shared<FfmpegMovieRenderer>()};
}

Subject fake() {
    auto scheduler = std::make_shared<VirtualScheduler>();
    auto renderer = std::make_shared<FakeMovieRenderer>(*scheduler);
    return {renderer, [renderer] { renderer->sessions.back()->succeed(); },
            [scheduler] { scheduler->run(); }};
}

class RendererContract : public testing::TestWithParam<Subject (*)()> {
  protected:
    MovieJob job(double seconds) const {
        MovieJob made;
        made.source = fixtureFile("30");
        made.pieces = {SourcePiece{1, seconds}};
        made.renderSize = {320, 180};
        made.target = folder_.path() / "film.mp4";
        return made;
    }
    bool folderIsEmpty() const { return fs::is_empty(folder_.path()); }

    using Ending = Result<fs::path>;
    struct Run {
        Result<std::shared_ptr<MovieSession>> session;
        std::shared_ptr<std::vector<Ending>> endings;
        std::future<void> ended;
    };
    static Run start(MovieRenderer& renderer, MovieJob job) {
        auto endings = std::make_shared<std::vector<Ending>>();
        auto done = std::make_shared<std::promise<void>>();
        auto future = done->get_future();
        return {renderer.start(std::move(job),
                               [=](Ending ending) {
                                   endings->push_back(std::move(ending));
                                   done->set_value();
                               }),
                endings, std::move(future)};
    }

    TempFolder folder_;
};

TEST_P(RendererContract, ASuccessLeavesTheFilmAndNothingElse) {
    const auto subject = GetParam()();
    auto run = start(*subject.renderer, job(0.5));
    ASSERT_TRUE(run.session.ok());
    subject.letItSucceed();
    subject.settle();
    run.ended.get();
    ASSERT_EQ(run.endings->size(), 1U);
    ASSERT_TRUE(run.endings->front().ok()) << run.endings->front().error().text;
    EXPECT_EQ(*run.endings->front(), folder_.path() / "film.mp4");
    EXPECT_EQ((*run.session)->progress(), 1);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path()), {}), 1);
    EXPECT_GT(fs::file_size(folder_.path() / "film.mp4"), 0U);
    (*run.session)->cancel();  // too late to have an effect
    subject.settle();
    EXPECT_EQ(run.endings->size(), 1U);
}

TEST_P(RendererContract, ACancelledRunEndsSoonAndLeavesNothing) {
    const auto subject = GetParam()();
    auto big = job(10);
    big.pieces = std::vector<std::variant<SourcePiece, StillPiece>>(50, SourcePiece{1, 10});
    big.renderSize = {1280, 720};
    auto run = start(*subject.renderer, big);
    ASSERT_TRUE(run.session.ok());
    std::this_thread::sleep_for(std::chrono::milliseconds(300));  // rendering must be in progress
    const auto begin = std::chrono::steady_clock::now();
    (*run.session)->cancel();
    (*run.session)->cancel();
    subject.settle();
    run.ended.get();
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    ASSERT_EQ(run.endings->size(), 1U);
    ASSERT_FALSE(run.endings->front().ok());
    EXPECT_EQ(run.endings->front().error(), (Error{"Export", 999, "Canceled"}));
    EXPECT_TRUE(folderIsEmpty());
}

TEST_P(RendererContract, RefusesATargetThatExistsAndAFilmOfNothing) {
    const auto subject = GetParam()();
    auto empty = job(1);
    empty.pieces.clear();
    EXPECT_FALSE(start(*subject.renderer, empty).session.ok());
    EXPECT_FALSE(start(*subject.renderer, job(0.015)).session.ok()) << "less than half a frame";
    folder_.write("film.mp4", "mine");
    EXPECT_EQ(start(*subject.renderer, job(1)).session.error().domain, "Export");
    EXPECT_EQ(fs::file_size(folder_.path() / "film.mp4"), 4U);
}

INSTANTIATE_TEST_SUITE_P(Subjects, RendererContract, testing::Values(&real, &fake),
                         [](const auto& subject) { return subject.index == 0 ? "Real" : "Fake"; });

}  // namespace
}  // namespace tembrix
