/* The values of all settings at one moment. */
#ifndef DESK_SUPPORT_SETTINGS_H
#define DESK_SUPPORT_SETTINGS_H

#include "support/settings_table.h"

#include <string>
#include <vector>

namespace desk
{

class Settings
{
  public:
    /* The values a new monitor has. */
    Settings();

    /* The value of a number's setting; 0 for other kinds. */
    int number(Key key) const
    {
        return numbers[key.index()];
    }
    /* The value as text, as the store holds it. */
    const std::string &text(Key key) const
    {
        return texts[key.index()];
    }
    void set(Key key, int value);
    void set(Key key, std::string value);
    /* Back to the factory value. */
    void reset(Key key);

    int activePreset() const
    {
        return number("active_color_space");
    }
    bool operator==(const Settings &) const = default;

  private:
    std::vector<std::string> texts;
    std::vector<int> numbers;
};

/* The three settings of one input, 0 to InputCount - 1. */
Key inputActive(int input);
Key inputWidth(int input);
Key inputHeight(int input);

} // namespace desk

#endif
