// A file that appears when it is whole: written under a temporary name in the folder of its place, then renamed. Until
// Commit the place is untouched, and whatever ends the program before, by its own decision or by a signal that it
// catches, leaves nothing behind.
#pragma once

#include <string>
#include <string_view>

class OutputFile {
public:
    // Throws a Failure when input and place are the same file, or when the place is no regular file or cannot be
    // written. A symbolic link is followed: what it points to is replaced, and the link stays. What is replaced leaves
    // its permissions to the new file.
    OutputFile(const std::string& place, const std::string& input);
    ~OutputFile();   // removes what was not committed
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    int Descriptor() const { return descriptor; }
    // Where the place leads: alike for all names of one place, but for hard links.
    const std::string& Target() const { return target; }
    void Write(std::string_view contents);
    void Commit();

private:
    std::string name;        // as the user wrote it
    std::string target;      // where it leads
    std::string temporary;   // beside target
    int descriptor = -1;
};
