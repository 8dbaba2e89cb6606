#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QWidget;

namespace tembrix {

class CoreServices;

// The program: creates the adapters, the core services and the windows. Created after the
// QApplication, on the main thread.
class Application {
  public:
    // Must be called before the QApplication is created.
    static void prepare();

    // `resources` contains texts, collections and guides.
    explicit Application(std::filesystem::path resources);
    ~Application();

    // Creates and starts the services and shows the list window. Called once, before any other
    // function.
    void start();
    void bringForward();  // shows the list window, even if it was closed

    QWidget& listWindow();
    CoreServices& core() const;

  private:
    struct Parts;
    std::filesystem::path resources_;
    std::unique_ptr<Parts> parts_;
};

// Scales the user interface as the settings say. Made before the QApplication, because Qt reads the
// scale only then.
class InterfaceScale {
  public:
    InterfaceScale();
    // Called once the QApplication exists: programs that this one starts keep their own scale.
    void restore() const;

  private:
    std::optional<std::string> before_;
};

// The resources of the installed program, or those of the source tree in which it was built.
std::filesystem::path findResources();

}  // namespace tembrix
