#pragma once

#include "Platform/Foundation/UniqueFunction.h"
#include "Platform/Http/DataResponse.h"
#include "Platform/Http/HttpTransport.h"
#include "Platform/Http/RequestHandle.h"
#include "Platform/Http/ResponseFinisher.h"

#include <boost/json/value.hpp>

#include <memory>
#include <optional>
#include <string>

namespace teralune {

class SessionManager;

/// A request in preparation, made by a SessionManager. A response… operation ends the preparation and sends
/// it:
///
///     manager.request(url, HttpMethod::get).validate().responseString(handler).detach();
///
/// Every handler runs exactly once, on the main queue, never inside the call, also after a cancel and after
/// the session manager is gone. A request without a response operation is not sent.
class [[nodiscard]] DataRequest {
public:
    DataRequest(DataRequest&&) noexcept;
    DataRequest& operator=(DataRequest&&) noexcept;
    ~DataRequest();

    /// The absolute URL with its query; empty when it has none.
    const std::string& absoluteURL() const;

    /// Fails a reply whose status is not 200 to 299 or whose content type the Accept header does not admit.
    DataRequest&& validate() &&;
    /// A failure of this request is final: the retrier is not asked.
    DataRequest&& withoutRetrier() &&;
    DataRequest&& inLane(TransferLane lane) &&;
    /// Adds a header field, which the adapter finds in each attempt.
    DataRequest&& header(std::string name, std::string value) &&;

    template<class T>
    using Handler = UniqueFunction<void(DataResponse<T>)>;

    /// The outcome alone.
    RequestHandle response(Handler<void> handler) &&;
    /// The bytes.
    RequestHandle responseData(Handler<std::string> handler) &&;
    /// The text, by the charset of the content type; without one UTF-8, and ISO 8859-1 where it is not UTF-8.
    /// Always valid UTF-8.
    RequestHandle responseString(Handler<std::string> handler) &&;
    /// The same text as what the mapper makes of it, on the delegate queue.
    template<class T>
    RequestHandle responseString(T (*mapper)(std::string text), Handler<T> handler) &&;
    /// The parsed text, fragments allowed. An empty body is an error, but for statuses 204 and 205 (null).
    RequestHandle responseJSON(Handler<boost::json::value> handler) &&;
    /// A JSON object mapped to a record by the mapper, which returns no value where that is impossible. Runs
    /// on the delegate queue.
    template<class T>
    RequestHandle responseObject(std::optional<T> (*mapper)(const boost::json::object&),
                                 Handler<T> handler) &&;

private:
    friend class SessionManager;
    struct Plan;
    explicit DataRequest(std::unique_ptr<Plan> plan);

    RequestHandle send(ResponseFinisher finisher) &&;

    std::unique_ptr<Plan> plan_;
};

} // namespace teralune

#include "Platform/Http/DataRequest.inl.h"
