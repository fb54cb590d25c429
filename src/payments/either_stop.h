#pragma once

#include <stop_token>

namespace tandrel {

// A stop token that is requested as soon as either of two is.
class EitherStop {
 public:
    EitherStop(std::stop_token one, std::stop_token other)
        : one_(std::move(one), Forward{source_}), other_(std::move(other), Forward{source_}) {}
    ~EitherStop() = default;
    EitherStop(const EitherStop&) = delete;
    EitherStop& operator=(const EitherStop&) = delete;

    std::stop_token token() const { return source_.get_token(); }
    bool requested() const { return source_.stop_requested(); }

 private:
    struct Forward {
        std::stop_source source;
        void operator()() { source.request_stop(); }
    };

    std::stop_source source_;
    std::stop_callback<Forward> one_;
    std::stop_callback<Forward> other_;
};

}  // namespace tandrel
