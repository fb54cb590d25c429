#pragma once

#include <map>
#include <stop_token>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/json.h"

namespace tandrel {

// One parsed request. `body` is always a JSON object, empty when there was none or it was not one.
struct HTTPRequest {
    std::string method;                        // as sent: "GET", "POST"
    std::string path;                          // percent-decoded, without the query
    std::map<std::string, std::string> query;  // percent-decoded; "+" stays a plus
    Json body = Json::object();
    // Requested while the handler runs, once the client has closed its connection or the server
    // stops. A client that only ends its sending looks the same and counts as gone, too, although
    // it still gets the reply.
    std::stop_token clientGone;
};

struct HTTPResponse {
    int status = 200;
    std::string contentType = "application/json";
    std::map<std::string, std::string> headers;
    Bytes body;

    // `object` as JSON with sorted keys.
    static HTTPResponse json(const Json& object, int status = 200);
    // {"error": message}
    static HTTPResponse error(std::string_view message, int status = 400);
    static HTTPResponse error(const Error& error) {
        return HTTPResponse::error(error.message, error.status);
    }
};

}  // namespace tandrel
