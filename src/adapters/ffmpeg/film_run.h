#pragma once

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "ports/movie_renderer.h"

#include "adapters/ffmpeg/film_plan.h"

namespace tembrix {

class FilmPictures;
class FilmSound;
class FilmWriter;

// Limits how many runs work at the same time.
class Turns {
  public:
    explicit Turns(int count) : free_(count) {}
    // Waits for a turn. Returns false if `givenUp` became true first; wake() makes it check.
    bool take(const std::atomic<bool>& givenUp);
    void giveBack();
    void wake();

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int free_;
};

// Renders one film. Pictures and sound are decoded on separate threads and encoded on another.
class FilmRun final : public MovieSession {
  public:
    FilmRun(MovieJob job, MovieRenderer::Completion completion, std::shared_ptr<Turns> turns);
    ~FilmRun() override;  // must not be destroyed on the run's own thread

    void begin();
    void wait();  // waits until its thread has ended
    bool ended() const { return ended_; }

    float progress() const override { return progress_; }
    void cancel() override;

  private:
    Result<std::filesystem::path> render();
    Result<void> encode(FilmPictures& pictures, FilmSound* sound, FilmWriter& writer);

    MovieJob job_;  // used by the run's own thread; empty once it has ended
    const FilmPlan plan_;
    MovieRenderer::Completion completion_;
    const std::shared_ptr<Turns> turns_;
    std::atomic<bool> canceled_ = false;
    std::atomic<bool> stop_ = false;  // ends all threads, after a failure or after cancel()
    std::atomic<bool> ended_ = false;
    std::atomic<float> progress_ = 0;
    std::thread thread_;
};

}  // namespace tembrix
