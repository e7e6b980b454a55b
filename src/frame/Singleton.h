#pragma once

// Base of every manager class: one static pointer to the only instance.
// The constructor publishes the object, the destructor withdraws it, so a
// manager that does not exist yet (or is already gone) reads as null.
template <typename T> class Singleton
{
public:
    static T* instance() { return current; }

protected:
    Singleton() { current = static_cast<T*>(this); }
    ~Singleton() { current = nullptr; }

    Singleton(const Singleton&) = delete;
    Singleton& operator=(const Singleton&) = delete;

private:
    static inline T* current = nullptr;
};
