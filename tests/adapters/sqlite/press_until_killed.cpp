// Makes stamps by key presses until it is killed. Prints the id of each one once it is stored.

#include <cstdio>

#include "fakes/pressing_project.h"

int main(int, char** arguments) {
    tembrix::PressingProject project(arguments[1]);
    project.open(project.addVideo("match.mp4"));
    const auto& lines = *project.timeline.lines;
    std::size_t stored = lines.back()->stamps.size();
    for (double time = 1;; time += 0.5) {
        project.players.player()->advanceTo(time);
        project.strike();
        const auto& stamps = lines.back()->stamps;
        if (stamps.size() != ++stored)
            return 1;
        std::printf("%s\n", stamps.back()->id.text().c_str());
        std::fflush(stdout);
        // Lets the flush to the files run between the presses.
        project.scheduler.advance(0.5);
    }
}
