// Change notification.
#pragma once

#include "core/list.h"

namespace zorvan {
namespace detail {

template <typename Signature>
class callable;

// Something that can be called with one argument.
template <typename R, typename A>
class callable<R(A)> {
  public:
    virtual ~callable() = default;
    virtual R operator()(A argument) = 0;
};

template <typename Callable, typename Object, typename Member>
class member_function;

// Binding of a member function to an object that outlives it.
template <typename R, typename A, typename Object, typename Member>
class member_function<callable<R(A)>, Object, Member> final : public callable<R(A)> {
  public:
    member_function(Object object, Member member) : object_(object), member_(member) {}
    R operator()(A argument) override { return (object_->*member_)(argument); }

  private:
    Object object_;
    Member member_;
};

}  // namespace detail

// List of callbacks with one argument. Subscribers are never copied: a bound callback holds the
// original's address.
template <typename A>
class EventT {
  public:
    using Callback = detail::callable<void(A)>;

    EventT() = default;
    EventT(EventT const&) = delete;
    EventT& operator=(EventT const&) = delete;
    ~EventT() {
        for (Callback* callback : callbacks_) {
            delete callback;
        }
    }

    // Takes ownership on true; on false (out of memory) the caller keeps the callback.
    bool Add(Callback* callback) { return callbacks_.Append(callback); }

    void Fire(A argument) {
        for (uint32_t i = 0; i < callbacks_.Count(); ++i) {
            (*callbacks_[i])(argument);
        }
    }

  private:
    List<Callback*> callbacks_;
};

}  // namespace zorvan
