#include "Tests/Support/SelfSignedServer.h"

#include "Tests/Support/LoopbackServer.h"

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

#include <sys/socket.h>
#include <unistd.h>

#include <memory>

namespace teralune {

namespace {

template<auto release>
struct Releaser {
    template<class T>
    void operator()(T* resource) const {
        release(resource);
    }
};
template<class T, auto release>
using Owned = std::unique_ptr<T, Releaser<release>>;

using Key = Owned<EVP_PKEY, EVP_PKEY_free>;
using Certificate = Owned<X509, X509_free>;

Certificate selfSigned(EVP_PKEY* key) {
    Certificate certificate(X509_new());
    X509_set_version(certificate.get(), X509_VERSION_3);
    X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -60);
    X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
    X509_set_pubkey(certificate.get(), key);
    X509_set_issuer_name(certificate.get(), X509_get_subject_name(certificate.get()));
    const Owned<X509_EXTENSION, X509_EXTENSION_free> names(
        X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1"));
    X509_add_ext(certificate.get(), names.get(), -1);
    X509_sign(certificate.get(), key, EVP_sha256());
    return certificate;
}

} // namespace

SelfSignedServer::SelfSignedServer() : listener_(listenOnLoopback()), thread_([this] { serve(); }) {}

SelfSignedServer::~SelfSignedServer() {
    end();
    close(listener_);
}

std::string SelfSignedServer::url() const {
    return "https://127.0.0.1:" + std::to_string(portOf(listener_)) + "/";
}

void SelfSignedServer::end() {
    shutdown(listener_, SHUT_RDWR);
    if (thread_.joinable()) {
        thread_.join();
    }
}

void SelfSignedServer::serve() {
    const Owned<SSL_CTX, SSL_CTX_free> context(SSL_CTX_new(TLS_server_method()));
    const Key key(EVP_EC_gen("P-256"));
    SSL_CTX_use_certificate(context.get(), selfSigned(key.get()).get());
    SSL_CTX_use_PrivateKey(context.get(), key.get());
    for (int socket = -1; (socket = accept(listener_, nullptr, nullptr)) >= 0; close(socket)) {
        const Owned<SSL, SSL_free> session(SSL_new(context.get()));
        SSL_set_fd(session.get(), socket);
        char byte = 0;
        const bool isComplete = SSL_accept(session.get()) == 1 && SSL_read(session.get(), &byte, 1) == 1;
        completedHandshakes_ += isComplete ? 1 : 0;
    }
}

} // namespace teralune
