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
            _instance = static_cast<T *>(this);
    }
    ~RootSingleton() = default;

    static T *_instance;
};

template <class T>
T *RootSingleton<T>::_instance = nullptr;
