#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>

#include "base/log.h"

#include "ports/texts.h"

namespace tembrix {

// Texts from <folder>/<language>.json, an object of texts by key.
class FileTexts final : public Texts {
  public:
    // If the file cannot be read, this is logged, and the keys are returned as texts.
    FileTexts(std::filesystem::path folder, const std::string& language, Log& log);

    void setLanguage(const std::string& language);

    std::string text(std::string_view key) const override;

  private:
    void load(const std::string& language);

    const std::filesystem::path folder_;
    Log& log_;
    std::map<std::string, std::string, std::less<>> texts_;
};

}  // namespace tembrix
