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

/// A value with a setter that does nothing when the value is equal, and a signal for when it is not.
/// Main thread only.
template <class T> class Observable {
public:
    Observable() = default;
    explicit Observable(T value)
        : m_value(std::move(value))
    {
    }
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    const T& get() const { return m_value; }
    const T& operator*() const { return m_value; }
    const T* operator->() const { return &m_value; }

    void set(T value)
    {
        if (m_value == value)
            return;
        m_value = std::move(value);
        m_changed.emit(m_value);
    }

    /// Lets `change(T&)` change the value in its place, for values that are large; it says whether it did.
    template <class Change> void modify(Change change)
    {
        if (change(m_value))
            m_changed.emit(m_value);
    }

    /// Calls `slot(const T&)` after every change, for as long as the Connection is kept.
    template <class Slot> [[nodiscard]] Connection onChange(Slot slot)
    {
        return Connection(m_changed.connect(std::move(slot)));
    }

private:
    T m_value{};
    Signal<const T&> m_changed;
};

} // namespace quillmark
