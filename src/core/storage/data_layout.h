#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "ports/user_defaults.h"

// The names of everything that is stored: keys of the user defaults, folders and files. They are
// defined only here. They are the format of the user's data and must not change.
namespace tembrix::layout {

// Keys of the user defaults.
inline constexpr const char* videosDataKey = "videosData";
inline constexpr const char* videosCheckKey = "videosDataCheck";  // checksums of the list of videos
// The checksum of a list of videos that may be damaged, until the user knows.
inline constexpr const char* videosDoubtKey = "videosDataDoubt";
inline constexpr const char* videosCleanupDoneKey = "videosDataDuplicationCleanupDone_v1";
inline constexpr const char* timelinePrefix = "timeline_";
inline constexpr const char* collectionPrefix = "collection_";
inline constexpr const char* damagedPrefix = setAsidePrefix;  // and the key of a damaged value
// Followed by the id of a video whose timeline could not be read, until its backup has been
// handled.
inline constexpr const char* unreadablePrefix = "unreadable_";
inline constexpr const char* markupModeKey = "appMarkupMode";
inline constexpr const char* editingLineKey = "editingStampLineID";
inline constexpr const char* editingStampKey = "editingStampID";
inline constexpr const char* lastSelectedCollectionKey = "lastSelectedCollection";  // a name
// Absent if that is the name of a standard collection.
inline constexpr const char* lastSelectedCollectionIdKey = "lastSelectedCollectionID";
inline constexpr const char* collectionsBookmarksKey = "collectionsBookmarks";
inline constexpr const char* collectionsLoadedKey = "collectionsBookmarksLoaded";
inline constexpr const char* savedCollectionsKey = "savedCollections";
// Also the account name of the flag in the keychain.
inline constexpr const char* collectionsDeduplicatedKey = "collectionsDeduplicationDone";
// The collection index while its file is not up to date, so that a killed process loses no name.
inline constexpr const char* collectionsUnsavedKey = "collectionsUnsaved";
// The collection index as last written to its file, in case the file is damaged.
inline constexpr const char* collectionsSecondCopyKey = "collectionsSecondCopy";
inline constexpr const char* lastSyncDateKey = "DataSync_LastSyncDate";

inline constexpr const char* settingsKey = "settings";          // what differs from the defaults
inline constexpr const char* commandKeysKey = "commandKeys";    // what the user changed
inline constexpr const char* lastOpenedPrefix = "lastOpened_";  // a date, by the id of a video
inline constexpr const char* matchPrefix = "match_";  // what an entry was named after, by its id
// Followed by the key of a value of a deleted video, until the program ends.
inline constexpr const char* deletedPrefix = "deleted_";
inline constexpr const char* positionPrefix = "position_";  // seconds, by the id of a video
inline constexpr const char* windowPlacePrefix = "windowPlace_";

inline std::string lastOpenedKey(std::string_view videoId) {
    return lastOpenedPrefix + std::string(videoId);
}

inline std::string windowPlaceKey(std::string_view window) {
    return windowPlacePrefix + std::string(window);
}

inline std::string timelineKey(std::string_view videoId) {
    return timelinePrefix + std::string(videoId);
}

inline std::string matchKey(std::string_view videoId) {
    return matchPrefix + std::string(videoId);
}

inline std::string positionKey(std::string_view videoId) {
    return positionPrefix + std::string(videoId);
}

// The keys of all values that belong to one video. They are removed with its entry.
inline std::vector<std::string> keysOfVideo(std::string_view videoId) {
    return {timelineKey(videoId), lastOpenedKey(videoId), matchKey(videoId), positionKey(videoId)};
}

inline std::string deletedKey(std::string_view key) {
    return deletedPrefix + std::string(key);
}

inline std::string deletedVideoKey(std::string_view videoId) {
    return deletedKey("video_" + std::string(videoId));
}

inline std::string deletedDocumentKey(std::string_view videoId) {
    return deletedKey("document_" + std::string(videoId));
}

inline std::string collectionKey(std::string_view collectionId) {
    return collectionPrefix + std::string(collectionId);
}

inline std::string unreadableKey(std::string_view videoId) {
    return unreadablePrefix + std::string(videoId);
}

inline std::string damagedKey(std::string_view key) {
    return damagedPrefix + std::string(key);
}

// Folders. The data folder is in Documents. The backup has a folder of the same name with copies of
// its subfolders.
inline constexpr const char* dataFolder = "Tembrix-Stat";
inline constexpr const char* timelinesFolder = "Timelines";
inline constexpr const char* collectionsFolder = "Collections";
inline constexpr const char* playFieldsFolder = "PlayFields";
inline constexpr const char* screenshotsFolder = "Screenshots";
inline constexpr const char* previewFolder = "Preview";
inline constexpr const char* backupFolder = "Tembrix-Stat-Backup";  // in Application Support
inline constexpr const char* replacedFolder =
    "Replaced";  // in the data folder, with one folder per restore

inline constexpr const char* programFolder = "tembrix-stat";  // in Application Support

// Files.
inline constexpr const char* recordExtension = ".json";
inline constexpr const char* collectionIndexFile = "CollectionsBookmarks.json";
inline constexpr const char* tagGroupsFile = "tagGroups.json";
inline constexpr const char* tagsFile = "tags.json";
inline constexpr const char* labelGroupsFile = "labelGroups.json";
inline constexpr const char* labelsFile = "labels.json";
inline constexpr const char* timeEventsFile = "timeEvents.json";
inline constexpr const char* playFieldFile = "playField.json";
inline constexpr const char* defaultsFile = "defaults.sqlite";  // in the program's data folder
// In the data folder: which change of each value the documents contain.
inline constexpr const char* writtenValuesFile = "WrittenValues.txt";
inline constexpr const char* defaultsBackupFile = "UserDefaultsBackup.plist";
inline constexpr const char* secondCopyFile = "second-copy.plist";
inline constexpr const char* unfinishedRestoreFile =
    "Unfinished.txt";  // in the folder of replaced data, while a restore is under way

}  // namespace tembrix::layout
