#include "Benchmarks/BareClient.h"

#include "Platform/Foundation/FatalError.h"

#include <curl/curl.h>

namespace teralune::benchmarks {

BareClient::BareClient(std::string url, const HttpHeaders& headers, std::size_t connections)
    : url_(std::move(url))
    , multi_(curl_multi_init()) {
    curl_slist* list = nullptr;
    for (const auto& [name, value] : headers) {
        list = curl_slist_append(list, (name + ": " + value).c_str());
    }
    headers_ = list;
    for (std::size_t index = 0; index < connections; ++index) {
        CURL* const easy = curl_easy_init();
        curl_easy_setopt(easy, CURLOPT_URL, url_.c_str());
        curl_easy_setopt(easy, CURLOPT_HTTPHEADER, list);
        curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
        curl_easy_setopt(easy, CURLOPT_PROXY, "");
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &append);
        handles_.push_back({easy, {}});
    }
    for (auto& [easy, body] : handles_) {
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, &body);
        curl_easy_setopt(easy, CURLOPT_PRIVATE, &body);
    }
}

BareClient::~BareClient() {
    for (const auto& [easy, body] : handles_) {
        curl_easy_cleanup(easy);
    }
    curl_multi_cleanup(multi_);
    curl_slist_free_all(static_cast<curl_slist*>(headers_));
}

Duration BareClient::run(std::size_t requests, std::size_t atOnce) {
    return timed([&] {
        std::size_t unsent = requests;
        std::size_t completed = 0;
        for (std::size_t index = 0; index < std::min(atOnce, handles_.size()); ++index, --unsent) {
            curl_multi_add_handle(multi_, handles_[index].easy);
        }
        while (true) {
            int running = 0;
            curl_multi_perform(multi_, &running);
            int left = 0;
            while (const CURLMsg* message = curl_multi_info_read(multi_, &left)) {
                CURL* const easy = message->easy_handle;
                check(easy, message->data.result);
                curl_multi_remove_handle(multi_, easy);
                ++completed;
                if (unsent > 0) {
                    --unsent;
                    curl_multi_add_handle(multi_, easy);
                }
            }
            if (completed == requests) {
                return;
            }
            curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
        }
    });
}

std::size_t BareClient::append(char* data, std::size_t size, std::size_t count, void* body) {
    static_cast<std::string*>(body)->append(data, size * count);
    return size * count;
}

void BareClient::check(void* easy, int code) {
    std::string* body = nullptr;
    long status = 0;
    curl_easy_getinfo(easy, CURLINFO_PRIVATE, &body);
    curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
    if (code != CURLE_OK || status != 200 || body->size() != 256) {
        fatalError("A request of the bare client failed.");
    }
    body->clear();
}

} // namespace teralune::benchmarks
