#include "Benchmarks/QtClient.h"

#include "Platform/Foundation/FatalError.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>

namespace teralune::benchmarks {

struct QtClient::State {
    int argumentCount = 1;
    char name[16] = "HttpBenchmark";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{argumentCount, arguments};
    QNetworkAccessManager manager;
    QNetworkRequest request;
    QEventLoop loop;
    std::size_t unsent = 0;
    std::size_t unfinished = 0;

    void sendNext() {
        --unsent;
        QNetworkReply* const reply = manager.get(request);
        QObject::connect(reply, &QNetworkReply::finished, &manager, [this, reply] {
            if (reply->error() != QNetworkReply::NoError || reply->readAll().size() != 256) {
                fatalError("A request of the toolkit's client failed.");
            }
            reply->deleteLater();
            if (--unfinished == 0) {
                loop.quit();
            } else if (unsent > 0) {
                sendNext();
            }
        });
    }
};

QtClient::QtClient(const std::string& url, const HttpHeaders& headers) : state_(std::make_unique<State>()) {
    state_->manager.setProxy(QNetworkProxy::NoProxy);
    state_->request.setUrl(QUrl(QString::fromStdString(url)));
    for (const auto& [name, value] : headers) {
        state_->request.setRawHeader(QByteArray::fromStdString(name), QByteArray::fromStdString(value));
    }
}

QtClient::~QtClient() = default;

Duration QtClient::run(std::size_t requests, std::size_t atOnce) {
    return timed([&] {
        state_->unsent = state_->unfinished = requests;
        for (std::size_t index = 0; index < std::min(requests, atOnce); ++index) {
            state_->sendNext();
        }
        state_->loop.exec();
    });
}

} // namespace teralune::benchmarks
