#include "adapters/qt/qt_process_runner.h"

#include <QFile>
#include <QProcess>

#include "base/result.h"

namespace tembrix {

Result<ProcessOutcome> QtProcessRunner::run(const std::string& program,
                                            const std::vector<std::string>& arguments,
                                            std::stop_token stop) {
    QStringList list;
    for (const auto& argument : arguments)
        list.append(QFile::decodeName(argument.c_str()));
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(QFile::decodeName(program.c_str()), list);
    if (!process.waitForStarted(-1))
        return Error{"process", static_cast<int>(process.error()),
                     program + ": " + process.errorString().toStdString()};
    constexpr int lookInterval = 50;  // milliseconds
    while (process.state() != QProcess::NotRunning && !process.waitForFinished(lookInterval))
        if (stop.stop_requested())
            process.kill();
    ProcessOutcome outcome;
    outcome.exitStatus = process.exitCode();
    if (process.exitStatus() == QProcess::CrashExit)
        outcome.exitStatus += 128;
    outcome.output = process.readAll().toStdString();
    return outcome;
}

}  // namespace tembrix
