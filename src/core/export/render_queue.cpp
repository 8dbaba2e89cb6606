#include "core/export/render_queue.h"

#include <utility>

namespace tembrix {

namespace fs = std::filesystem;

RenderQueue::RenderQueue(MovieRenderer& renderer, Scheduler& scheduler)
    : renderer_(renderer), scheduler_(scheduler) {}

RenderQueue::~RenderQueue() {
    cancel();
}

void RenderQueue::start(std::vector<MovieJob> jobs, std::function<void()> jobEnded,
                        std::function<void(const Ending&)> allEnded) {
    jobs_ = std::move(jobs);
    jobEnded_ = std::move(jobEnded);
    allEnded_ = std::move(allEnded);
    sessions_.resize(jobs_.size());
    films_.resize(jobs_.size());
    startNext();
}

void RenderQueue::startNext() {
    while (running_ < sessionsAtOnce && next_ < jobs_.size() && !canceled_) {
        const std::size_t place = next_++;
        if (const auto session = startSession(place)) {
            sessions_[place] = *session;
            ++running_;
        } else {
            lastError_ = session.error();
        }
    }
    if (running_ > 0)
        return;
    Ending ending;
    for (auto& film : films_)
        if (film)
            ending.films.push_back(std::move(*film));
    ending.lastError = lastError_;
    std::exchange(allEnded_, nullptr)(ending);  // may destroy this object
}

Result<std::shared_ptr<MovieSession>> RenderQueue::startSession(std::size_t place) {
    // The renderer calls back on another thread, possibly before start() has returned.
    auto arrived = lifetime_.guard(
        [this, place](const Result<fs::path>& result) { sessionEnded(place, result); });
    return renderer_.start(
        std::move(jobs_[place]), [&scheduler = scheduler_, arrived](Result<fs::path> result) {
            scheduler.onMain([arrived, result = std::move(result)]() mutable { arrived(result); });
        });
}

void RenderQueue::sessionEnded(std::size_t place, const Result<fs::path>& result) {
    sessions_[place].reset();
    if (result)
        films_[place] = *result;
    else if (!canceled_)
        lastError_ = result.error();
    ++ended_;
    --running_;
    jobEnded_();
    startNext();
}

void RenderQueue::cancel() {
    canceled_ = true;
    // A session may end while it is being canceled, which changes the list.
    const auto sessions = sessions_;
    for (const auto& session : sessions)
        if (session)
            session->cancel();
}

std::optional<float> RenderQueue::sessionProgress() const {
    for (const auto& session : sessions_)
        if (session)
            return session->progress();
    return std::nullopt;
}

}  // namespace tembrix
