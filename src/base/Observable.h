// Values that views watch. A view connects to exactly the fields that it shows and keeps the Connection: when
// the Connection goes, the view hears nothing more.
#pragma once

#include <sigc++/sigc++.h>

#include <utility>

namespace quillmark {

template <class... Args> using Signal = sigc::signal<void(Args...)>;

/// An owned connection of a slot to a signal: disconnects when it is destroyed or assigned to. Main thread
/// only.
class Connection {
public:
    Connection() = default;
    Connection(const sigc::connection& connection)
        : m_connection(connection)
    {
    }
    Connection(Connection&& other) noexcept
        : m_connection(std::exchange(other.m_connection, {}))
    {
    }
    Connection& operator=(Connection&& other) noexcept
    {
        m_connection.disconnect();
        m_connection = std::exchange(other.m_connection, {});
        return *this;
    }
    ~Connection() { m_connection.disconnect(); }

private:
    sigc::connection m_connection;
};

/// A value that can be read and watched. Who may change it is its owner, who has the Variable behind it. Main
/// thread only.
template <class T> class Observable {
public:
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    const T& get() const { return m_value; }
    const T& operator*() const { return m_value; }
    const T* operator->() const { return &m_value; }

    /// Calls `slot(const T&)` after every change, for as long as the Connection is kept.
    template <class Slot> [[nodiscard]] Connection onChange(Slot slot) const
    {
        return Connection(m_changed.connect(std::move(slot)));
    }

protected:
    Observable() = default;
    explicit Observable(T value)
        : m_value(std::move(value))
    {
    }
    ~Observable() = default;

    T m_value{};
    mutable Signal<const T&> m_changed; ///< who listens is no part of the value
};

/// The owner's side of an Observable. Main thread only.
template <class T> class Variable final : public Observable<T> {
public:
    Variable() = default;
    explicit Variable(T value)
        : Observable<T>(std::move(value))
    {
    }

    /// Does nothing when the value is equal.
    void set(T value)
    {
        if (this->m_value == value)
            return;
        this->m_value = std::move(value);
        this->m_changed.emit(this->m_value);
    }

    /// Lets `change(T&)` change the value in its place, for values that are large; it says whether it did.
    template <class Change> void modify(Change change)
    {
        if (change(this->m_value))
            this->m_changed.emit(this->m_value);
    }
};

} // namespace quillmark
