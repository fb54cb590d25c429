#pragma once

#include <string>

#include "http/message.h"

namespace tandrel {

// A response as it goes over the wire: the head, then the body, which is moved and never copied.
struct Reply {
    std::string head;
    Bytes body;
};

using ReplyWriter = Reply (*)(HTTPResponse response);

// The engine port's form: a reason phrase by status, the response's own header lines last.
Reply httpReplyWriter(HTTPResponse response);

// The AirPlay port's form: no extra header lines; pictures are marked as not to be kept.
Reply airplayReplyWriter(HTTPResponse response);

}  // namespace tandrel
