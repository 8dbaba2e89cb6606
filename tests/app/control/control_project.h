#pragma once

#include <QApplication>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <string>

#include "app/app_project.h"

namespace tembrix {

// An open video of 100 seconds with the program's own texts, for the control window.
struct ControlProject : AppProject {
    explicit ControlProject(const QString& language = "en")
        : AppProject({.language = language.toStdString()}) {
        QFile file(QString(TEMBRIX_RESOURCES "/texts/%1.json").arg(language));
        if (file.open(QIODevice::ReadOnly)) {
            const QJsonObject all = QJsonDocument::fromJson(file.readAll()).object();
            for (auto it = all.begin(); it != all.end(); ++it)
                texts.set(it.key().toStdString(), it.value().toString().toStdString());
        }
        markupModes.setMarkupMode(MarkupMode::standard);
        openVideo();
        player.pause();
    }

    Uuid addLine(const std::string& name) {
        timeline.addLine(name);
        return timeline.lines->back()->id;
    }

    static TimelineStamp makeStamp(double start, double finish, const std::string& label,
                                   const std::string& color = "30A050") {
        TimelineStamp stamp;
        stamp.id = Uuid::random();
        stamp.idTag = "unknown";
        stamp.label = label;
        stamp.colorHex = color;
        stamp.timeStartSeconds = start;
        stamp.timeFinishSeconds = finish;
        return stamp;
    }
    Uuid addStamp(const Uuid& line, double start, double finish,
                  const std::string& label = "Pass") {
        const TimelineStamp stamp = makeStamp(start, finish, label);
        timeline.appendStamp(line, stamp);
        return stamp.id;
    }
    const TimelineStamp* stamp(const Uuid& id) {
        const auto found = timeline.findStamp(id);
        return found ? found->stamp : nullptr;
    }

    // Processes tasks of the core and events of the window for a while.
    void settle(double seconds = 0) {
        QApplication::processEvents();
        scheduler.advance(seconds);
        QApplication::processEvents();
    }
};

}  // namespace tembrix
