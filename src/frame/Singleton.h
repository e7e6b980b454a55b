#pragma once

// Base of every manager class: one static pointer to the only instance.
// The constructor publishes the object, the destructor withdraws it, so a
// manager that does not exist yet (or is already gone) reads as null.
template <typename T> class Singleton
{
public:
    // The cast waits until someone asks: while the base is being built, the
    // derived object does not exist yet and may not be cast to.
    static T* instance() { return static_cast<T*>(current); }

protected:
    Singleton() { current = this; }
    ~Singleton() { current = nullptr; }

    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

private:
    static inline Singleton* current = nullptr;
};
