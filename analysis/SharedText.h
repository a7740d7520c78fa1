#pragma once

#include <string>
#include <string_view>

// A text that many records repeat (the format name, the reason a row shows
// "ERROR"): each distinct text is kept once for the whole process and every
// record holding it points there, 8 bytes a record. Kept texts live until the
// process ends; there are only as many as the analysis has different words for.
class SharedText final
{
public:
    SharedText() = default;
    // Implicit, so that `info.format = "MP3"` reads as before.
    SharedText(const char* text)
        : SharedText(std::string_view(text ? text : ""))
    {}
    SharedText(const std::string& text)
        : SharedText(std::string_view(text))
    {}
    explicit SharedText(std::string_view text);

    // An empty string when empty.
    const std::string& str() const;
    const char* c_str() const { return str().c_str(); }
    bool empty() const { return m_text == nullptr; }
    void clear() { m_text = nullptr; }

    // One copy per distinct text, so the pointers tell.
    friend bool operator==(const SharedText& a, const SharedText& b)
    {
        return a.m_text == b.m_text;
    }
    friend bool operator!=(const SharedText& a, const SharedText& b) { return !(a == b); }
    friend bool operator==(const SharedText& a, const char* b) { return a.str() == b; }
    friend bool operator!=(const SharedText& a, const char* b) { return !(a == b); }
    friend bool operator==(const SharedText& a, const std::string& b) { return a.str() == b; }
    friend bool operator!=(const SharedText& a, const std::string& b) { return !(a == b); }

private:
    const std::string* m_text = nullptr;
};
