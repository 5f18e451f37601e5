#pragma once

/// Keeps a process-wide pointer to the first T made. It is not cleared when that T goes: the roots
/// of an application live as long as the process does.
template <class T>
class RootSingleton
{
protected:
    RootSingleton()
    {
        if (!_instance)
            _instance = this;
    }
    ~RootSingleton() = default;

    // Not a T yet where it is stored: the T is still to be constructed.
    static RootSingleton<T> *_instance;
};

template <class T>
RootSingleton<T> *RootSingleton<T>::_instance = nullptr;
