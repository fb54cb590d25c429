#include "http/message.h"

namespace tandrel {

HTTPResponse HTTPResponse::json(const Json& object, int status) {
    HTTPResponse response;
    response.status = status;
    response.body = toBytes(dumpJson(object));
    return response;
}

HTTPResponse HTTPResponse::error(std::string_view message, int status) {
    return json({{"error", message}}, status);
}

}  // namespace tandrel
