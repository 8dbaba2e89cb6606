#pragma once

#include <QAccessible>
#include <functional>

namespace tembrix {

// Whether a screen reader or another assistive program listens. Nothing is spent on announcements
// before.
bool announcementsAreHeard();

void announce(QAccessibleEvent& event);

// Announcements go to `listener` instead; an empty one ends that. For tests.
void listenToAnnouncements(std::function<void(QAccessibleEvent& event)> listener);

}  // namespace tembrix
