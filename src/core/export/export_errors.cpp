#include "core/export/export_errors.h"

#include <cerrno>
#include <utility>

namespace tembrix {

namespace {

std::string ownText(const Error& error) {
    return error.text.empty() ? "Unknown export error" : error.text;
}

}  // namespace

Error plainError(std::string text) {
    return {"NSError", -1, std::move(text)};
}

std::string describeMaking(const Error& error, const Texts& texts) {
    if (error.domain != "file")
        return ownText(error);
    switch (error.code) {
        case ENOSPC:
        case EDQUOT:
            return texts.text("exportErrorDiskFull");
        case EACCES:
        case EPERM:
        case EROFS:
            return texts.text("exportErrorTemporaryFolder");
        default:
            return ownText(error);
    }
}

std::string describeSaving(const Error& error, const Texts& texts) {
    if (error.domain != "file")
        return ownText(error);
    switch (error.code) {
        case ENOSPC:
        case EDQUOT:
            return texts.text("exportSaveDiskFull");
        case EACCES:
        case EPERM:
        case EROFS:
            return texts.text("exportSaveNotWritable");
        case ENOENT:
        case ENOTDIR:
            return texts.text("exportSaveFolderMissing");
        case EFBIG:
            return texts.text("exportSaveTooLarge");
        case EINVAL:
        case ENAMETOOLONG:
            return texts.text("exportSaveNameRefused");
        default:
            return ownText(error);
    }
}

}  // namespace tembrix
