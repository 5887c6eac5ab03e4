#pragma once
// ixo_object_ptr<T>: the smart pointer that holds one counted reference on an ixo_object.
//
// The count lives in the object, so wrapping the same plain pointer in several smart
// pointers is safe: a plain pointer taken from ixo_object_from_id or `this` may be wrapped
// at any time. Conversions: to a base class implicitly; to a derived (or sibling) class
// explicitly, by a run-time down-cast that yields null when the object is not of that class.

#include <compare>
#include <concepts>
#include <cstddef>
#include <functional>
#include <utility>

template <typename T> class ixo_object_ptr
{
public:
    using element_type = T;

    ixo_object_ptr() noexcept = default;
    ixo_object_ptr(std::nullptr_t) noexcept {}

    // Takes a reference on `p` when it is not null.
    ixo_object_ptr(T* p) : p_(p)
    {
        if (p_)
            p_->add_ref();
    }

    ixo_object_ptr(ixo_object_ptr const& other) : ixo_object_ptr(other.p_) {}
    ixo_object_ptr(ixo_object_ptr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}

    // Up-casts convert implicitly; anything else is a checked run-time down-cast that
    // leaves this pointer null when the object is not a T. The source is never changed.
    template <typename U>
    requires(!std::same_as<U, T> &&
             requires(U * u) { dynamic_cast<T*>(u); }) explicit(!std::convertible_to<U*, T*>)
        ixo_object_ptr(ixo_object_ptr<U> const& other)
        : ixo_object_ptr(cast(other.get()))
    {
    }

    // Releases the reference held, if any.
    ~ixo_object_ptr()
    {
        if (p_)
            p_->release();
    }

    // Same object: nothing happens. Otherwise the new object is referenced before the old
    // one is released, so `p = p->child()` cannot destroy the child on the way.
    ixo_object_ptr& operator=(ixo_object_ptr const& other)
    {
        if (p_ != other.p_)
            ixo_object_ptr(other).swap(*this);
        return *this;
    }
    ixo_object_ptr& operator=(ixo_object_ptr&& other) noexcept
    {
        if (this != &other)
            ixo_object_ptr(std::move(other)).swap(*this);
        return *this;
    }
    ixo_object_ptr& operator=(T* p)
    {
        if (p_ != p)
            ixo_object_ptr(p).swap(*this);
        return *this;
    }
    // Releases the reference and becomes null.
    ixo_object_ptr& operator=(std::nullptr_t)
    {
        reset();
        return *this;
    }

    // Releases the reference and becomes null.
    void reset() { ixo_object_ptr().swap(*this); }
    void swap(ixo_object_ptr& other) noexcept { std::swap(p_, other.p_); }

    // The plain pointer, without a reference of its own.
    T* get() const noexcept { return p_; }
    T* operator->() const noexcept { return p_; }
    T& operator*() const noexcept { return *p_; }
    explicit operator bool() const noexcept { return p_ != nullptr; }

    // Equality and a total order by the plain pointers, so smart pointers can be keys of
    // ordered sets and maps.
    template <typename U>
    friend bool operator==(ixo_object_ptr const& a, ixo_object_ptr<U> const& b) noexcept
    {
        return a.get() == b.get();
    }
    friend bool operator==(ixo_object_ptr const& a, std::nullptr_t) noexcept
    {
        return a.p_ == nullptr;
    }
    friend std::strong_ordering operator<=>(ixo_object_ptr const& a,
                                            ixo_object_ptr const& b) noexcept
    {
        return std::compare_three_way{}(a.p_, b.p_);
    }

private:
    template <typename U> static T* cast(U* p)
    {
        if constexpr (std::convertible_to<U*, T*>)
            return p;
        else
            return dynamic_cast<T*>(p);
    }

    T* p_ = nullptr;
};

template <typename T> struct std::hash<ixo_object_ptr<T>>
{
    std::size_t operator()(ixo_object_ptr<T> const& p) const noexcept
    {
        return std::hash<T*>{}(p.get());
    }
};
