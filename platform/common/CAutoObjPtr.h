#pragma once

#include <cstddef>
#include <utility>

namespace OS {

/**
 * Owns one object, or none, and deletes it through its virtual destructor when reset, reassigned or destroyed.
 * Moves, never copies: operations that may change what is owned take it by reference.
 */
template <class T>
class CAutoObjPtr {
  public:
    CAutoObjPtr() noexcept = default;
    CAutoObjPtr(std::nullptr_t) noexcept {}
    explicit CAutoObjPtr(T* pObject) noexcept : m_pObject(pObject) {}
    CAutoObjPtr(CAutoObjPtr&& other) noexcept : m_pObject(other.Release()) {}
    /** Takes over an object of a derived class. */
    template <class U>
    CAutoObjPtr(CAutoObjPtr<U>&& other) noexcept : m_pObject(other.Release()) {}
    CAutoObjPtr(const CAutoObjPtr&) = delete;
    ~CAutoObjPtr() { delete m_pObject; }

    CAutoObjPtr& operator=(CAutoObjPtr&& other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    CAutoObjPtr& operator=(const CAutoObjPtr&) = delete;

    /** Deletes what is owned and owns pObject (or nothing) from now on. */
    void Reset(T* pObject = nullptr) noexcept { delete std::exchange(m_pObject, pObject); }
    /** Gives ownership to the caller. */
    T* Release() noexcept { return std::exchange(m_pObject, nullptr); }

    T* Get() const noexcept { return m_pObject; }
    T* operator->() const noexcept { return m_pObject; }
    T& operator*() const noexcept { return *m_pObject; }
    explicit operator bool() const noexcept { return m_pObject != nullptr; }
    friend bool operator==(const CAutoObjPtr& left, std::nullptr_t) noexcept { return left.m_pObject == nullptr; }
    friend bool operator!=(const CAutoObjPtr& left, std::nullptr_t) noexcept { return left.m_pObject != nullptr; }

  private:
    T* m_pObject = nullptr;
};

}  // namespace OS
