#include "app/widgets/translated.h"

#include <utility>

#include "base/signal.h"

namespace tembrix {

namespace {

struct Follower final : QObject {
    Follower(QObject* owner, Subscription subscription)
        : QObject(owner), subscription_(std::move(subscription)) {}

  private:
    Subscription subscription_;
};

}  // namespace

void followLanguage(QObject* owner, const Texts& texts, std::function<void()> show) {
    show();
    new Follower(owner, texts.changed.observe(std::move(show)));
}

}  // namespace tembrix
