#pragma once

#include <map>
#include <optional>
#include <string>

#include "core/records/annotation_records.h"
#include "core/records/markup_mode.h"

// The one table of in-process events. Each struct is one name; `name` is its literal text, which
// logs show. Posted and observed on the main thread. See EventBus.
namespace tembrix::events {

// A hot key on a tag.                        HotKeyManager -> tag panel
struct ShowLabelSheet {
    static constexpr const char* name = "showLabelSheet";
    Tag tag;
};
// A label's hot key while a sheet is up.     HotKeyManager -> selection sheet
struct LabelHotkeyPressed {
    static constexpr const char* name = "labelHotkeyPressed";
    std::string labelId;
    std::string tagId;
};
// A tag's name changed.                      collection model, tag library -> timeline store, tag
// library
struct TagUpdated {
    static constexpr const char* name = "tagUpdated";
    std::optional<std::string> tagId;
    std::optional<std::string> newName;
};
// Background load of all collections.        TagLibraryManager -> tag panel
struct CollectionsLoadingStarted {
    static constexpr const char* name = "collectionsLoadingStarted";
};
struct CollectionsLoadingFinished {
    static constexpr const char* name = "collectionsLoadingFinished";
};
// A collection changed, or, without a name, any of them.
//                                            index, collection model, tag library, restore -> tag
// library, tag panel
struct CollectionDataChanged {
    static constexpr const char* name = "collectionDataChanged";
    std::optional<std::string> collectionName;
};
// The active lists were replaced.            TagLibraryManager -> tag panel
struct CurrentCollectionRefreshed {
    static constexpr const char* name = "currentCollectionRefreshed";
};
// Hot keys off and on.                       WindowsManager -> HotKeyManager
struct CollectionEditorOpened {
    static constexpr const char* name = "collectionEditorOpened";
};
struct CollectionEditorClosed {
    static constexpr const char* name = "collectionEditorClosed";
};
// The stored markup mode was set.            setMarkupMode -> control window, tag panel
struct MarkupModeChanged {
    static constexpr const char* name = "markupModeChanged";
    std::optional<MarkupMode> mode;
};
// Recount the stamps per tag.                timeline store, tag panel -> tag panel
struct StampCountsChanged {
    static constexpr const char* name = "stampCountsChanged";
};
// Hover text, or none.                       control window -> control window
struct TimelineStampHoverChanged {
    static constexpr const char* name = "timelineStampHoverChanged";
    std::optional<std::string> stampInfo;
};
// The drawing editor opens or closes on the player.
//                                            player and its window -> HotKeyManager, control
//                                            window,
// tag panel
struct EditorModeChanged {
    static constexpr const char* name = "editorModeChanged";
    std::optional<bool> active;
};
// Keys of the drawing editor.                HotKeyManager -> drawing canvas
struct EditorEnterKeyPressed {
    static constexpr const char* name = "editorEnterKeyPressed";
};
struct EditorCopyKeyPressed {
    static constexpr const char* name = "editorCopyKeyPressed";
};
struct EditorPasteKeyPressed {
    static constexpr const char* name = "editorPasteKeyPressed";
};
struct EditorUndoKeyPressed {
    static constexpr const char* name = "editorUndoKeyPressed";
};
// A drawing is on show.                      player window -> control window
struct ScreenshotDisplayChanged {
    static constexpr const char* name = "screenshotDisplayChanged";
    std::optional<bool> active;
};
// A text box has the keyboard.               drawing editor -> HotKeyManager
struct TextBoxEditingChanged {
    static constexpr const char* name = "textBoxEditingChanged";
    std::optional<bool> active;
};
// Viewer transport.                          HotKeyManager, WindowsManager -> viewer
struct ToggleViewerPlayer {
    static constexpr const char* name = "toggleViewerPlayer";
};
struct StopViewerPlayer {
    static constexpr const char* name = "stopViewerPlayer";
};
struct CloseViewerWindow {
    static constexpr const char* name = "closeViewerWindow";
};
struct CreatePlaylistComposition {
    static constexpr const char* name = "createPlaylistComposition";
};
struct SeekViewerPlayerForward {
    static constexpr const char* name = "seekViewerPlayerForward";
};
struct SeekViewerPlayerBackward {
    static constexpr const char* name = "seekViewerPlayerBackward";
};
// Sheets with a text field block hot keys while they are up.    the sheets -> HotKeyManager
struct AddLineSheetAppeared {
    static constexpr const char* name = "AddLineSheetAppeared";
};
struct EditTimelineSheetAppeared {
    static constexpr const char* name = "EditTimelineSheetAppeared";
};
struct SheetDismissed {
    static constexpr const char* name = "SheetDismissed";
};

// "openEditorForScreenshot" and "playSingleTag" carry records of the drawings and the viewer and
// join this table with them.

}  // namespace tembrix::events
