#include "adapters/qt/one_instance.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QLocalServer>
#include <QLocalSocket>
#include <QThread>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "base/files.h"

namespace tembrix {

namespace {

constexpr int pauseMilliseconds = 50;
constexpr int connectMilliseconds = 500;
constexpr int answerMilliseconds = 1000;

// The name of a socket must be short, so it contains a hash of the folder.
QString serverName(const std::filesystem::path& folder) {
    std::error_code ignored;
    const std::string place = pathText(std::filesystem::weakly_canonical(folder, ignored));
    const auto hash =
        QCryptographicHash::hash(QByteArrayView(place.data(), static_cast<qsizetype>(place.size())),
                                 QCryptographicHash::Sha1);
    return "tembrix-stat-" + QString::fromLatin1(hash.toHex().left(16));
}

}  // namespace

class OneInstance::Server {
  public:
    explicit Server(const QString& name) {
        server_.setSocketOptions(QLocalServer::UserAccessOption);
        QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { answer(); });
        QLocalServer::removeServer(name);  // left by a killed process, because the lock is held
        server_.listen(name);
    }
    std::function<void()> asked;

  private:
    void answer() {
        while (QLocalSocket* socket = server_.nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            socket->write("1");
            socket->flush();
            if (asked)
                asked();
        }
    }
    QLocalServer server_;
};

OneInstance::OneInstance(std::filesystem::path folder) : folder_(std::move(folder)) {}

OneInstance::~OneInstance() {
    stopAnswering();
    if (lock_ >= 0)
        ::close(lock_);
}

bool OneInstance::begin(double patience) {
    QElapsedTimer time;
    time.start();
    while (!takeLock()) {
        if (firstAnswers() || static_cast<double>(time.elapsed()) > patience * 1000)
            return false;
        QThread::msleep(pauseMilliseconds);
    }
    server_ = std::make_unique<Server>(serverName(folder_));
    return true;
}

// The lock is released when the process ends, even if it was killed.
bool OneInstance::takeLock() {
    (void)makeFolder(folder_);
    if (lock_ < 0)
        lock_ = ::open((folder_ / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    return lock_ < 0 || ::flock(lock_, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK;
}

bool OneInstance::firstAnswers() const {
    QLocalSocket socket;
    socket.connectToServer(serverName(folder_));
    return socket.waitForConnected(connectMilliseconds) &&
           socket.waitForReadyRead(answerMilliseconds);
}

void OneInstance::setAsked(std::function<void()> asked) {
    if (server_)
        server_->asked = std::move(asked);
}

void OneInstance::stopAnswering() {
    server_.reset();
}

}  // namespace tembrix
