#include "app/widgets/announcements.h"

#include <utility>

namespace tembrix {

namespace {

std::function<void(QAccessibleEvent&)>& listenerOfTests() {
    static std::function<void(QAccessibleEvent&)> listener;
    return listener;
}

}  // namespace

bool announcementsAreHeard() {
    return QAccessible::isActive() || listenerOfTests();
}

void announce(QAccessibleEvent& event) {
    if (const auto& listener = listenerOfTests())
        listener(event);
    else
        QAccessible::updateAccessibility(&event);
}

void listenToAnnouncements(std::function<void(QAccessibleEvent& event)> listener) {
    listenerOfTests() = std::move(listener);
}

}  // namespace tembrix
