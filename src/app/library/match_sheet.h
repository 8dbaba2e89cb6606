#pragma once

#include <filesystem>

#include "base/date.h"

#include "ports/texts.h"

#include "app/widgets/sheet.h"
#include "core/keyboard/hot_key_manager.h"
#include "core/keyboard/text_focus.h"
#include "core/records/video_records.h"

class QDateTimeEdit;

namespace tembrix {

class FocusAwareLineEdit;

// Asks for teams, score and date of a match before its video is added to the library.
class MatchSheet final : public Sheet {
    Q_OBJECT

  public:
    MatchSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
               const VideoMetadata& initial);

    std::string team1() const;
    std::string team2() const;
    std::string score() const;
    Date date() const;

  private:
    FocusAwareLineEdit* addField(FocusStateManager& focus, const char* key, const char* prompt,
                                 const std::string& value);

    FocusAwareLineEdit* team1_;
    FocusAwareLineEdit* team2_;
    FocusAwareLineEdit* score_;
    QDateTimeEdit* date_;
};

// Asks for a new name of a video.
class RenameSheet final : public Sheet {
    Q_OBJECT

  public:
    RenameSheet(QWidget* parent, const Texts& texts, FocusStateManager& focus,
                const std::string& name);
    std::string name() const;

  private:
    FocusAwareLineEdit* name_;
};

}  // namespace tembrix
