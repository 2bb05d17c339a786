// Audio files as the tools see them: interleaved float frames in and out, whatever library stands behind. All operations
// throw a data Failure that names the file.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

enum class Container { kWav, kW64, kRf64, kAiff, kFlac, kOgg, kOpus, kOther };
enum class Encoding { kPcm8, kPcm16, kPcm24, kPcm32, kFloat32, kFloat64, kLossy, kOther };

struct ContainerEntry {
    const char* name;         // on the command line
    const char* extensions;   // each with a dot before and after it
    Container container;
};
std::span<const ContainerEntry> Containers();

struct AudioFormat {
    int32_t channels = 0;
    int32_t rate = 0;   // Hz
    Container container = Container::kOther;
    Encoding encoding = Encoding::kOther;
    std::vector<int> channelMap = {};   // of the file library; empty when the file tells none
};

struct Tag {
    int kind;   // of the file library
    std::string text;
};

class AudioReader {
public:
    virtual ~AudioReader() = default;
    virtual const AudioFormat& Format() const = 0;
    // Frames of the file. Read has given them all when it gives less than it was asked for.
    virtual int64_t Frames() const = 0;
    virtual int64_t Read(float* out, int64_t frames) = 0;
    virtual std::vector<Tag> Tags() const = 0;
};

class AudioWriter {
public:
    virtual ~AudioWriter() = default;
    virtual void Write(const float* in, int64_t frames) = 0;
    // Samples outside -1 .. 1 that an encoding in whole numbers had to limit.
    virtual int64_t Clipped() const = 0;
    // Completes the file; nothing can be written after that.
    virtual void Finish() = 0;
};

std::unique_ptr<AudioReader> OpenAudio(const std::string& path);

// Writes to an open descriptor, which stays the caller's. name: for messages. expectedFrames decides whether a WAV file
// can hold the sizes; other counts may be written.
std::unique_ptr<AudioWriter> CreateAudio(int descriptor, const std::string& name, const AudioFormat& format,
                                         int64_t expectedFrames, const std::vector<Tag>& tags);

// The format of an output: the container as told, or by the path's extension, or as the input; the encoding as told, or
// as the input where the container can hold that, or else the next better one that it holds. Throws a usage Failure
// for what cannot be had.
AudioFormat ChooseFormat(const AudioFormat& input, const std::string& outputPath, std::optional<Container> container,
                         std::optional<Encoding> encoding);
