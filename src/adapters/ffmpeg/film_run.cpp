#include "adapters/ffmpeg/film_run.h"

#include <algorithm>
#include <optional>

#include "base/result.h"

#include "adapters/ffmpeg/av_handles.h"
#include "adapters/ffmpeg/bounded_queue.h"
#include "adapters/ffmpeg/film_pictures.h"
#include "adapters/ffmpeg/film_sound.h"
#include "adapters/ffmpeg/film_writer.h"

namespace tembrix {

namespace {

// Memory for pictures waiting for the encoder, so that it has work while the next cut is located.
constexpr double picturesWaiting = 64e6;  // bytes
constexpr std::size_t soundsWaiting = 128;

Error canceledError() {
    return {"Export", 999, "Canceled"};
}

Error exportError(const Error& error) {
    return {"Export", -1, error.text};
}

// Produces values on its own thread until the last value or the first failure.
template <class T>
class Stage {
  public:
    // `make` returns the next value, or nullopt at the end.
    template <class Make>
    Stage(std::size_t capacity, std::atomic<bool>& stop, Make make)
        : stop_(stop), queue_(capacity), thread_([this, make = std::move(make)]() mutable {
              while (!stop_) {
                  Result<std::optional<T>> value = make();
                  if (!value)
                      failure_ = value.error();
                  if (!value || !*value || !queue_.push(std::move(**value)))
                      break;
              }
              queue_.close();
          }) {}
    ~Stage() {
        stop_ = true;
        queue_.close();
        thread_.join();
    }

    // Returns nullopt at the end or after a failure.
    std::optional<T> next() { return queue_.pop(); }
    // Valid after next() has returned nullopt.
    const std::optional<Error>& failure() const { return failure_; }

  private:
    std::atomic<bool>& stop_;
    BoundedQueue<T> queue_;
    std::optional<Error> failure_;
    std::thread thread_;  // last, because it uses all other members
};

}  // namespace

bool Turns::take(const std::atomic<bool>& givenUp) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return givenUp || free_ > 0; });
    if (givenUp)
        return false;
    --free_;
    return true;
}

void Turns::giveBack() {
    const std::lock_guard lock(mutex_);
    ++free_;
    changed_.notify_all();
}

void Turns::wake() {
    const std::lock_guard lock(mutex_);
    changed_.notify_all();
}

FilmRun::FilmRun(MovieJob job, MovieRenderer::Completion completion, std::shared_ptr<Turns> turns)
    : job_(std::move(job)),
      plan_(job_),
      completion_(std::move(completion)),
      turns_(std::move(turns)) {}

FilmRun::~FilmRun() {
    cancel();
    wait();
}

void FilmRun::begin() {
    thread_ = std::thread([this] {
        Result<std::filesystem::path> result = canceledError();
        if (turns_->take(canceled_)) {
            result = render();
            turns_->giveBack();
        }
        if (!result && canceled_)
            result = canceledError();
        job_ = {};  // the pictures of the job may be large, and the session may be kept for long
        completion_(result);
        completion_ = nullptr;
        ended_ = true;
    });
}

void FilmRun::cancel() {
    canceled_ = true;
    stop_ = true;
    turns_->wake();
}

void FilmRun::wait() {
    if (thread_.joinable())
        thread_.join();
}

Result<std::filesystem::path> FilmRun::render() {
    auto opened = FilmPictures::open(job_, plan_, stop_);
    if (!opened)
        return exportError(opened.error());
    auto& pictures = **opened;
    FilmFormat format = pictures.format();
    format.framesPerSecond = job_.framesPerSecond;
    std::unique_ptr<FilmSound> sound;
    if (pictures.sourceHasAudio()) {
        auto found = FilmSound::open(job_, plan_, stop_);
        if (!found)
            return exportError(found.error());
        sound = std::move(*found);
        format.sampleRate = sound->sampleRate();
    }
    auto writer = FilmWriter::open(job_.target, format);
    if (!writer)
        return writer.error();
    if (auto encoded = encode(pictures, sound.get(), **writer); !encoded)
        return encoded.error();
    if (auto finished = (*writer)->finish(canceled_); !finished)
        return finished.error();
    progress_ = 1;
    return job_.target;
}

Result<void> FilmRun::encode(FilmPictures& pictures, FilmSound* sound, FilmWriter& writer) {
    const int frames = plan_.frames();
    const auto shape = pictures.format();
    const double frameBytes = shape.width * shape.height * 1.5;
    const auto waiting =
        static_cast<std::size_t>(std::clamp(picturesWaiting / frameBytes, 4.0, 48.0));
    Stage<FrameHandle> decoded(
        waiting, stop_, [&pictures, left = frames]() mutable -> Result<std::optional<FrameHandle>> {
            if (left-- == 0)
                return std::optional<FrameHandle>();
            auto picture = pictures.next();
            if (!picture)
                return picture.error();
            return std::optional<FrameHandle>(std::move(*picture));
        });
    std::optional<Stage<FilmSound::Samples>> heard;
    if (sound)
        heard.emplace(
            soundsWaiting, stop_,
            [sound, left = sound->length(),
             most = writer.soundFrame()]() mutable -> Result<std::optional<FilmSound::Samples>> {
                if (left == 0)
                    return std::optional<FilmSound::Samples>();
                const auto count = std::min<std::int64_t>(left, most);
                left -= count;
                FilmSound::Samples samples;
                sound->read(static_cast<std::size_t>(count), samples);
                return std::optional<FilmSound::Samples>(std::move(samples));
            });

    std::int64_t samplesWritten = 0;
    for (int k = 0; k < frames; ++k) {
        auto picture = decoded.next();
        if (stop_)
            return canceledError();
        if (!picture)
            return decoded.failure() ? exportError(*decoded.failure()) : canceledError();
        if (auto added = writer.addPicture(std::move(*picture)); !added)
            return added;
        // Sound and pictures are interleaved closely, for players that start before the file is
        // loaded completely.
        const bool last = k + 1 == frames;
        while (heard && (last || samplesWritten * job_.framesPerSecond <
                                     static_cast<std::int64_t>(k + 1) * sound->sampleRate())) {
            const auto samples = heard->next();
            if (!samples)
                break;
            const float* const planes[] = {(*samples)[0].data(), (*samples)[1].data()};
            const auto count = static_cast<int>((*samples)[0].size());
            if (auto added = writer.addSound(planes, count); !added)
                return added;
            samplesWritten += count;
        }
        progress_ = 0.99F * static_cast<float>(k + 1) / static_cast<float>(frames);
    }
    return {};
}

}  // namespace tembrix
