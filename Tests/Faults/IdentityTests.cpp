#include "Hosts/CommandLine/DataFolder.h"
#include "Platform/Foundation/AsciiText.h"
#include "SolverService/Model/NoteRecord.h"
#include "SolverService/SolverService.h"
#include "Tests/EndToEnd/Terminal.h"
#include "Tests/Faults/FaultCounts.h"
#include "Tests/Faults/Wires.h"

#include <boost/algorithm/string/replace.hpp>
#include <boost/asio/ssl.hpp>
#include <openssl/x509v3.h>

#include <filesystem>
#include <set>
#include <sys/stat.h>

namespace teralune {
namespace {

namespace asio = boost::asio;
using service::Fault;
using Received = LoopbackServer::Request;

/// A TLS server whose certificate is for its address and signed by nobody but itself. It only shakes hands.
class SelfSignedServer {
public:
    SelfSignedServer() {
        const std::shared_ptr<EVP_PKEY> key(EVP_EC_gen("P-256"), EVP_PKEY_free);
        const std::shared_ptr<X509> certificate(X509_new(), X509_free);
        X509_set_version(certificate.get(), X509_VERSION_3);
        X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -60);
        X509_gmtime_adj(X509_getm_notAfter(certificate.get()), 3600);
        X509_set_pubkey(certificate.get(), key.get());
        // A nameless issuer would be refused even by a client that asks for no trust.
        X509_NAME* const name = X509_get_subject_name(certificate.get());
        X509_NAME_add_entry_by_NID(name, NID_commonName, MBSTRING_ASC,
                                   reinterpret_cast<const unsigned char*>("itself"), -1, -1, 0);
        X509_set_issuer_name(certificate.get(), name);
        const std::shared_ptr<X509_EXTENSION> names(
            X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "IP:127.0.0.1"), X509_EXTENSION_free);
        X509_add_ext(certificate.get(), names.get(), -1);
        X509_sign(certificate.get(), key.get(), EVP_sha256());
        SSL_CTX_use_certificate(context_.native_handle(), certificate.get());
        SSL_CTX_use_PrivateKey(context_.native_handle(), key.get());
        thread_ = std::thread([this] { serve(); });
    }
    ~SelfSignedServer() {
        shutdown(listener_.native_handle(), SHUT_RDWR);
        thread_.join();
    }

    std::string host() const { return "127.0.0.1:" + std::to_string(listener_.local_endpoint().port()); }
    /// How many handshakes a client carried through to the end, of those that it took for ended.
    std::atomic<int> completedHandshakes = 0;

private:
    void serve() {
        while (true) {
            boost::system::error_code end;
            asio::ssl::stream<asio::ip::tcp::socket> session(engine_, context_);
            if (listener_.accept(session.next_layer(), end)) {
                return;
            }
            char byte = 0;
            session.handshake(session.server, end);
            completedHandshakes += !end && session.read_some(asio::buffer(&byte, 1), end) == 1 ? 1 : 0;
        }
    }

    asio::io_context engine_;
    asio::ip::tcp::acceptor listener_{engine_, {asio::ip::address_v4::loopback(), 0}};
    asio::ssl::context context_{asio::ssl::context::tls_server};
    std::thread thread_;
};

TEST(IdentityTests, nothing_that_tells_who_asks_follows_a_redirect_to_another_origin) {
    // SELF is the origin that was asked, OTHER another one, NAME another name of the same machine.
    const auto locations = splitList(
        "http://OTHER/x,//OTHER/x,HTTP://OTHER/x,http:/OTHER/x,http:///OTHER/x,http:OTHER/x,http://"
        "SELF@OTHER/x,"
        "http://u:p@OTHER/x,http://SELF:80@OTHER/x,\\\\OTHER\\x,/\\OTHER/x,\\/OTHER/x,http:\\\\OTHER/x,"
        "http://SELF\\@OTHER/x,http://SELF%2f@OTHER/x,http://SELF#@OTHER/x,http://SELF?@OTHER/x,http://"
        "OTHER#@SELF/x,"
        "http://OTHER\\.SELF/x,http://SELF.OTHER/x,http://NAME/x,//NAME/x,/away,away,https://TLS/x,ftp://"
        "OTHER/x,"
        "file:///etc/passwd,javascript:alert(1),,0",
        ',');
    LoopbackServer other([](const Received&) { return LoopbackServer::Reply(200, ""); });
    SelfSignedServer tls;
    std::string self;
    LoopbackServer server([&](const Received& request) {
        const std::string target = request.target(); // tells status and place
        if (!std::isdigit(target[1]))
            return LoopbackServer::Reply(307, "", {{"Location", other.url()}});
        const bool isLoop = target.size() == 2;
        std::string location(isLoop ? "0" : locations[std::stoul(target.substr(5))]);
        boost::replace_all(location, "OTHER", other.host());
        boost::replace_all(location, "SELF", self);
        boost::replace_all(location, "NAME", "localhost" + self.substr(self.find(':')));
        boost::replace_all(location, "TLS", tls.host());
        return LoopbackServer::Reply(isLoop ? 302 : std::stoi(target.substr(1)), "",
                                     {{"Location", location}});
    });
    self = server.host();
    CurlTransport transport;
    std::size_t points = 0;
    for (const int status : {301, 302, 303, 307, 308})
        for (const HttpMethod method : {HttpMethod::get, HttpMethod::post})
            for (std::size_t place = 0; place < locations.size(); ++place, ++points) {
                const HttpHeaders headers{{"Cookie", "tq.token=s3cret"},
                                          {"authorization", "Bearer s3cret"},
                                          {"X-Key", "s3cret"},
                                          {"User-Agent", "agent"}};
                URLRequest::Body body;
                if (method == HttpMethod::post)
                    body = std::make_shared<const std::string>("password=s3cret");
                const std::string path = "/" + std::to_string(status) + "-" + std::to_string(place);
                const auto outcome = exchange(transport, {server.url(path), method, headers, body});
                // A body is not taken elsewhere at all.
                const bool isStopped = method == HttpMethod::post && status > 303;
                const std::int64_t code = locations[place] == "0"                             ? -1007
                                          : locations[place] == "https://TLS/x" && !isStopped ? -1202
                                                                                              : 0;
                EXPECT_TRUE(code == 0 || codeOf(outcome) == code) << locations[place];
            }
    std::size_t followed = 0;
    for (const LoopbackServer* each : {&server, &other})
        for (const Received& request : each->requests()) {
            const bool isForeign = request.header("Host") != self;
            followed += isForeign ? 1 : 0;
            EXPECT_EQ((request.head + request.body).find("s3cret") != std::string::npos, !isForeign)
                << request.head;
            EXPECT_EQ(request.header("User-Agent"), "agent");
        }
    EXPECT_EQ(tls.completedHandshakes, 0);
    EXPECT_GT(followed, points / 4);
    printFaults("redirects", points,
                std::to_string(followed) + " followed to other origins, without identity");
}

TEST(IdentityTests, a_control_character_never_reaches_a_header) {
    std::vector<std::string> attacks = {"\r\nX-Injected: y",
                                        "\r\n\r\nGET /forged HTTP/1.1\r\nHost: x\r\n\r\n",
                                        "\xc2\x85X-Injected: y", "\xe2\x80\xa8X-Injected: y"};
    for (char control = 0; control < ' '; ++control)
        attacks.push_back(std::string(1, control) + "X-Injected: y");
    attacks.push_back("\x7fX-Injected: y");
    Wires wires;
    FakeApplication& host = wires.application;
    FakeDevice& device = *host.fakePlatform.device;
    host.settings.setConnectedID("c1");
    std::string problem;
    std::string token;
    std::string* const fields[] = {&host.name,      &host.version, &host.build, &device.model,
                                   &device.version, &problem,      &token};
    wires.expect(std::size(fields) * attacks.size());
    std::size_t points = 0;
    for (std::string* field : fields)
        for (const std::string& attack : attacks) {
            const std::string before = std::exchange(*field, "a" + attack);
            host.settings.setAccessToken(token.empty() ? "new" : token);
            wires.networking->verify(
                problem, problem, SolutionOrigin::input,
                [&wires, points](const VerifyReply& reply) { wires.tell(points, reply.success); });
            ++points;
            wires.main->runUntil([&] { return wires.told == points; });
            *field = before;
        }
    wires.expectEachToldOnce();
    for (const Received& request : wires.server.requests()) {
        const std::string lines = boost::replace_all_copy(request.head, "\r\n", "");
        EXPECT_TRUE(std::none_of(lines.begin(), lines.end(), [](char c) {
            return (c >= 0 && c < ' ') || c == '\x7f';
        })) << request.head;
        EXPECT_TRUE(request.target().starts_with("/api/verifySolution?") &&
                    request.headers("X-Injected").empty());
        EXPECT_TRUE(request.body.empty());
    }
    // A token that can't be sent is left out, blanks are replaced; of the rest not a byte leaves.
    EXPECT_EQ(wires.server.requests().size(), wires.successes);
    EXPECT_GT(wires.successes, 2 * attacks.size());
    EXPECT_LT(wires.successes, points);
    printFaults("control characters in what headers are made of", points,
                std::to_string(wires.successes) + " sent without them, the others not at all");
}

TEST(IdentityTests, passwords_and_tokens_are_shown_nowhere_and_files_are_their_owner_s_alone) {
    const std::shared_ptr<const mode_t> before(new mode_t(::umask(0)), [](const mode_t* mask) {
        ::umask(*mask);
        delete mask;
    });
    SolverService::Options options;
    options.demoAccount = SolverService::DemoAccount::none;
    const auto service = std::move(SolverService::start(options).value());
    Terminal terminal({"--api-host", service->host(), "--http", "--verbose"});
    terminal.environment["TERALUNE_NEW_PASSWORD"] = "Cx7-second";
    std::set<std::string> names;
    const auto expectPrivateFiles = [&] {
        std::set<std::filesystem::path> paths = {terminal.dataFolder()};
        for (const auto& entry : std::filesystem::recursive_directory_iterator(terminal.dataFolder()))
            paths.insert(entry.path());
        for (const std::filesystem::path& path : paths) {
            struct stat status {};
            EXPECT_EQ(::lstat(path.c_str(), &status), 0);
            EXPECT_EQ(status.st_mode & ALLPERMS, S_ISDIR(status.st_mode) ? 0700U : 0600U) << path;
            names.insert(path.filename());
        }
    };
    std::string shown;
    std::size_t commands = 0;
    const auto run = [&](const std::vector<std::string>& arguments, const char* password = "Cx7-first") {
        terminal.environment["TERALUNE_PASSWORD"] = password;
        auto program = terminal.start(arguments);
        if (arguments.front() == "sync" && commands == 1) {
            // While the store is open.
            EXPECT_TRUE(service->faults().waitForHeld(1, std::chrono::seconds(30)));
            expectPrivateFiles();
            service->faults().release();
        }
        const Terminal::Outcome outcome = program.wait();
        ++commands;
        shown += outcome.output + outcome.error;
        expectPrivateFiles();
    };

    const char* email = "ada@teralune.example";
    run({"sign-up", email});
    service::NoteRecord note;
    note.problem = "2x=4";
    ASSERT_TRUE(service->addNotes(email, {note}));
    service->expireTokens();
    service->faults().script("/pub_api/steps", Fault::hold());
    run({"sync"});
    EXPECT_TRUE(names.contains("DataModel2.sqlite-wal") && names.contains("UserDefaults.sqlite-shm"));
    // An echo of all that must not be seen, under every status that a client treats in its own way.
    std::string echo = R"({"connected":7,"jwt":"echo-t0ken","password":"Cx7-first","set":"Cx7-second"})";
    for (const Fault& fault :
         {Fault::answer(200, echo, "application/json"), Fault::answer(403, echo), Fault::answer(500, echo),
          Fault::hangUp(), Fault::cutBody(), Fault::answer(200, "PLAY_SESSION=echo-t0ken")}) {
        for (const char* path :
             {"/refresh", "/mobileLogin", "/api/user/changePassword", "/api/user/updateEmail"})
            service->faults().script(path, fault);
        service->expireTokens();
        run({"sync"});
        run({"account", "password"});
        run({"account", "email", "b@teralune.example"});
        run({"sign-in", email});
        run({"sign-in", email}, "Cx7-wrong");
        service->faults().clear();
        run({"sign-in", email});
    }
    service->rejectRefresh();
    run({"sync"});
    run({"sign-in", email});
    run({"account", "password"});
    service->faults().script("/logout", Fault::answer(500, echo));
    run({"sign-out"});

    std::set<std::string> secrets = {"Cx7-first", "Cx7-second", "Cx7-wrong", "echo-t0ken"};
    for (const auto& request : service->requestLog().requests())
        for (const char* name : {"tq.token", "PLAY_SESSION"})
            if (const auto value = request.cookie(name); value && !value->empty())
                secrets.insert(*value);
    EXPECT_GT(secrets.size(), 10U);
    EXPECT_NE(shown.find("/mobileLogin"), std::string::npos);
    EXPECT_TRUE(terminal.keeps("/mobileLogin", "teralune.log"));
    for (const std::string& secret : secrets) {
        EXPECT_EQ(shown.find(secret), std::string::npos) << secret;
        // Signed out, so that not even the settings have a token left.
        EXPECT_FALSE(terminal.keeps(secret)) << secret;
    }
    ASSERT_TRUE(prepareDataFolder(terminal.dataFolder() / "deep" / "deeper"));
    expectPrivateFiles();
    printFaults("secrets in what " + std::to_string(commands) + " commands wrote and showed", secrets.size(),
                std::to_string(names.size()) + " names of files, none with a secret, none for anyone else");
}

} // namespace
} // namespace teralune
