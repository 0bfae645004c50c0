// The audio library as the program sees it: playback streams, recording inputs and capture, the encoder
// pipe, the tempo stream and the sound card that ties them together.
//
// All operations are called on the user-interface thread and do not wait for audio, nor, but for the few that say so,
// for a sound server; one that does not answer is given up after two seconds. BASS_Encode_IsActive may be called on any
// thread, and so may BASS_StreamCreateFile, BASS_RecordStart and takePeaks between BASS_Init and BASS_Free. Handles are
// never reused within one library; 0 means none, and an operation on a handle that is unknown fails silently. Positions
// and lengths are bytes of 16-bit stereo at 44100 Hz: four bytes a frame.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/effect_records.h"
#include "platform/pcm_source.h"

namespace melvane {

using Handle = std::uint32_t;

inline constexpr int kSampleRate = 44100;
inline constexpr int kBytesPerFrame = 4;

inline constexpr std::uint32_t BASS_SAMPLE_LOOP = 4;
inline constexpr std::uint32_t BASS_STREAM_DECODE = 0x200000;
inline constexpr std::uint32_t BASS_FX_FREESOURCE = 0x10000;

inline constexpr std::uint32_t BASS_INPUT_OFF = 0x10000;
inline constexpr std::uint32_t BASS_INPUT_ON = 0x20000;
inline constexpr std::uint32_t BASS_INPUT_LEVEL = 0x40000;
inline constexpr std::uint32_t BASS_INPUT_TYPE_MASK = 0xFF000000;
inline constexpr std::uint32_t BASS_INPUT_TYPE_UNDEF = 0x00000000;
inline constexpr std::uint32_t BASS_INPUT_TYPE_MIC = 0x03000000;
inline constexpr std::uint32_t BASS_INPUT_TYPE_ANALOG = 0x0A000000;

// Beyond any clock that runs, in parts in a million.
inline constexpr double kMostDrift = 10000;

inline constexpr float kMostTrim = 24;  // dB

// Tempo and rate values that leave the parameter of a tempo stream unchanged.
inline constexpr float kTempoUnchanged = -100.0F;
inline constexpr float kRateUnchanged = 0.0F;

// Called on the capture thread with each captured block of 16-bit stereo, once the encoder has it; `length` is in
// bytes. Returning false ends the capture. Not called any more once the encoder has finished.
using RecordProc = bool (*)(Handle handle, const void* buffer, std::uint32_t length, void* user);

struct BASS_INFO {
    std::uint32_t dsver = 0;    // version of the effect and mixing interface that is offered; 8 or later is needed
    std::uint32_t latency = 0;  // ms from mixing to hearing; 0 when no device plays
};

enum class ChannelActivity : std::uint32_t { stopped = 0, playing = 1 };

// How an encoder that was started on a capture stands.
enum class EncoderState {
    none,      // never started on that handle
    running,   // takes data, or finishes its file after BASS_Encode_Stop
    finished,  // took everything and ended with exit status 0
    failed,    // ended by itself before the stop, with another exit status, or by a signal
};

struct CardStatus {
    std::uint64_t framesMixed = 0;      // since the library was made
    std::uint64_t deviceUnderruns = 0;  // device callbacks that found too little to play; never recorded
    bool deviceOpen = false;            // false: the card runs silently on the machine's clock
};

// Linear, 1.0 is full scale.
struct PeakLevels {
    float left = 0;
    float right = 0;
};

// Why another program could not decode a file.
enum class DecodingFailure {
    none,
    noSound,    // it finds none, or ended without a result
    notRead,    // the file could not be read on
    noDecoder,  // it isn't installed
    notRun,     // it could not be started
    noRoom,     // for what it has decoded
};

// How a file stands that another program decodes before it is read.
struct Decoding {
    bool running = false;
    double progress = 0;  // 0..1, 0 where the file does not say how long it is
    DecodingFailure failure = DecodingFailure::none;
};

// What the card has mixed, before its limiter, kept on the disk in a file without a name for as long as this lives.
class KeptMix {
public:
    virtual ~KeptMix() = default;

    // Of what was kept until now.
    virtual std::int64_t frames() const = 0;
    // 0, or the error number (<cerrno>) by which the disk refused more of it.
    virtual int failure() const = 0;
    // The sound of the channel that is kept apart, and that of everything else, each with a linear gain. For a reader
    // of the program's own, as openReader's.
    virtual std::unique_ptr<PcmSource> read(float rest, float channel) const = 0;
};

// A sound as the card's limiter leaves it: no frame is shifted.
class LimitedSound : public PcmSource {
public:
    // The most that was taken away since this was asked last: 0 for nothing, 0.5 for half.
    virtual float takeReduction() = 0;
};

class AudioLibrary {
public:
    virtual ~AudioLibrary() = default;

    // --- Card and device -------------------------------------------------------------------------------
    // `device` -1 is the default device. Without a reachable device the card runs on the machine's clock.
    // False when the library is initialised already or `freq` is not 44100.
    virtual bool BASS_Init(int device, std::uint32_t freq, std::uint32_t flags, void* window, const void* classId) = 0;
    // Stops everything, waits for encoders that still finish their file, and frees all handles.
    virtual bool BASS_Free() = 0;
    virtual bool BASS_GetInfo(BASS_INFO& info) = 0;

    // Between holdCard and resumeCard no block is begun: what is set up in between starts on one frame.
    virtual void holdCard() = 0;
    virtual void resumeCard() = 0;
    // The card holds itself right behind the last frame of `channel`, so that nothing later is mixed.
    virtual void holdCardAtEndOf(Handle channel) = 0;
    // Everything that plays goes to the song's frame `frame`, clamped to 0 or later: the next frame that leaves the
    // card is what a run from the beginning has there. Returns at once, also while the card is held.
    virtual bool cueCard(std::int64_t frame) = 0;
    // While `end` > `begin`, the card goes on with the song's frame `begin` behind the frame `end` - 1.
    virtual void loopCard(std::int64_t begin, std::int64_t end) = 0;
    // The song's frame that leaves the card next, BASS_INFO::latency before it is heard; counted from where the first
    // channel began to play.
    virtual std::int64_t cardPosition() const = 0;
    // On the stepped clock: mixes up to `frames` frames and returns how many. Waits for a slow encoder, but
    // at most 100 ms a call, so that the caller can look at its signals; 0 too while the card is held.
    virtual std::uint32_t stepCard(std::uint32_t frames) = 0;
    virtual CardStatus cardStatus() const = 0;

    // --- Levels ----------------------------------------------------------------------------------------
    // The highest absolute sample since this was asked last of what a playback channel, behind its effects and its
    // level, adds to the card. Handle 0: of the sum of all channels before it is kept within full scale, so beyond
    // 1.0 where it would have been cut off. Sound is measured as it is mixed, BASS_INFO::latency before it is heard.
    // Never waits for the mixing thread.
    virtual PeakLevels takePeaks(Handle channel) = 0;
    // The most that the sum of all channels was turned down since this was asked last to keep it within full scale:
    // 0 for nothing, 0.5 for half. Never waits either.
    virtual float takeReduction() = 0;

    // On the stepped clock: keeps what is mixed from now on, until the result goes, and apart what `channel` adds to it
    // (0: none). nullptr when there is no place for a file.
    virtual std::shared_ptr<KeptMix> keepMix(Handle channel) = 0;
    // For a reader of the program's own. Behind a seek, only silence was before.
    virtual std::unique_ptr<LimitedSound> limited(std::unique_ptr<PcmSource> source) = 0;

    // --- Playback --------------------------------------------------------------------------------------
    // Opens a whole file (`mem` false, `offset` and `length` 0) by its UTF-8 name; MP3, OGG, WAV and what
    // else the decoders read. BASS_STREAM_DECODE: not playable itself, but the source of a tempo stream.
    // 0 when the file cannot be read as sound. Reads some files through once, and has others decoded by the program
    // ffmpeg, so it may take a while: see above for other threads.
    virtual Handle BASS_StreamCreateFile(bool mem, const char* file, std::uint32_t offset, std::uint32_t length,
                                         std::uint32_t flags) = 0;
    // The same for a recording that is `driftPpm` parts in a million longer than it should be (shorter where negative,
    // at most kMostDrift either way): it is played that much faster, in one go with the conversion of its rate. Any
    // thread, as above.
    virtual Handle openRecording(const std::string& file, double driftPpm, std::uint32_t flags) = 0;
    // Whoever waits in BASS_StreamCreateFile or BASS_RecordStart gets 0 within a moment; what a file or a server still
    // keeps busy ends by itself. Any thread.
    virtual void giveUpOpening() = 0;
    // Of a file that was opened or scanned lately, or is just now. Nothing of one that needs no other program. Any
    // thread, at once.
    virtual Decoding decoding(const std::string& file) const = 0;
    // The sound of a file for a reader of the program's own, which reads it on any one thread and where it wants.
    // nullptr when there is no sound in it or it can't be read, and when it is not `wanted` any more before it is open.
    // Any thread, also without BASS_Init; may take as long as BASS_StreamCreateFile.
    virtual std::unique_ptr<PcmSource> openReader(const std::string& file, const std::function<bool()>& wanted) = 0;
    // The same sound in another key, -12 to 12 semitones, as a tempo stream plays it.
    virtual std::unique_ptr<PcmSource> inKey(std::unique_ptr<PcmSource> source, double semitones) = 0;
    // A playable stream over a source of the program's own, which is read on the mixing thread; it ends where that
    // delivers fewer frames than asked for.
    virtual Handle createStream(std::shared_ptr<PcmSource> source) = 0;
    virtual bool BASS_StreamFree(Handle handle) = 0;
    // Frees a channel of any kind.
    virtual bool BASS_MusicFree(Handle handle) = 0;

    // Plays on from the current position, or from the start when `restart` is true or the end was reached.
    // A capture starts to deliver blocks with this call.
    virtual bool BASS_ChannelPlay(Handle handle, bool restart) = 0;
    virtual bool BASS_ChannelStop(Handle handle) = 0;
    virtual ChannelActivity BASS_ChannelIsActive(Handle handle) const = 0;
    // True for good once the file that a playback channel plays could no longer be read; a file that is damaged or
    // ends too soon does not count. What comes behind is not the file's sound.
    virtual bool channelFailed(Handle handle) const = 0;

    virtual std::uint64_t BASS_ChannelGetLength(Handle handle) const = 0;
    virtual std::uint64_t BASS_ChannelGetPosition(Handle handle) const = 0;
    // Beyond the end: false, and the position stays.
    virtual bool BASS_ChannelSetPosition(Handle handle, std::uint64_t position) = 0;
    // Rounded to a whole frame.
    virtual std::uint64_t BASS_ChannelSeconds2Bytes(Handle handle, float seconds) const = 0;

    // frequency in Hz (fixed at 44100), volume 0..100 (linear amplitude), pan -100 (left)..100 (right).
    virtual bool BASS_ChannelGetAttributes(Handle handle, std::uint32_t& frequency, std::uint32_t& volume,
                                           std::int32_t& pan) const = 0;
    // Values outside the ranges are clamped. A change on a sounding channel ramps within 20 ms.
    virtual bool BASS_ChannelSetAttributes(Handle handle, std::uint32_t frequency, std::uint32_t volume,
                                           std::int32_t pan) = 0;

    // The sound of a playback channel is made that much louder before its effects, -kMostTrim..kMostTrim dB (clamped).
    // Ramps like the attributes; at 0 samples pass bit by bit.
    virtual bool trimChannel(Handle handle, float decibels) = 0;

    // The channel begins `earlierFrames` before the song (behind its beginning where negative) and is silent before its
    // own start. `once`: it never loops, and fades within 5 ms at its two ends. The same place again changes nothing; a
    // sounding channel fades over within 20 ms.
    virtual bool placeChannel(Handle handle, std::int64_t earlierFrames, bool once) = 0;

    // --- Effects ---------------------------------------------------------------------------------------
    // Attaches an effect of EffectType `type` with its default record to a playback channel. Higher priorities
    // sound first, equal ones in the order of attaching. 0 on failure.
    virtual Handle BASS_ChannelSetFX(Handle handle, std::uint32_t type, std::int32_t priority) = 0;
    // Takes the record of the effect's own type only. Heard within 100 ms and without a click, at once on a
    // channel that has not sounded yet.
    virtual bool BASS_FXSetParameters(Handle effect, const EffectRecord& record) = 0;
    // The record as it was set.
    virtual bool BASS_FXGetParameters(Handle effect, EffectRecord& record) const = 0;

    // --- Tempo add-on ----------------------------------------------------------------------------------
    // A playable stream over a decoding one, whose key can be moved while it plays; at pitch 0 it passes
    // its source bit by bit. With BASS_FX_FREESOURCE it frees the source with itself. 0 on failure.
    virtual Handle BASS_FX_TempoCreate(Handle source, std::uint32_t flags) = 0;
    // tempo -100 and rate 0 leave those unchanged (no other values are offered); pitch in semitones, -5..5
    // (clamped to an octave either way).
    virtual bool BASS_FX_TempoSet(Handle handle, float tempo, float rate, float pitch) = 0;

    // --- Capture ---------------------------------------------------------------------------------------
    // Asks the sound server for its inputs, which the next BASS_RecordInit lists, and tells the names that it will:
    // to be called on any thread, also one that outlives the library.
    virtual std::function<std::vector<std::string>()> inputSearch() const = 0;
    // Opens the recording device (-1: the default one) and lists its inputs. Called again, it lists them anew: inputs
    // that are still there keep their switch and level, new ones are off. A running capture goes on as it is. Waits for
    // the sound server, unless an inputSearch has found them since it was called last.
    virtual bool BASS_RecordInit(int device) = 0;
    // Name of an input, nullptr behind the last. The text belongs to the library and lives until the next
    // BASS_RecordInit.
    virtual const char* BASS_RecordGetInputName(int input) const = 0;
    // Setting word: level 0..100 in bits 0-15, BASS_INPUT_OFF when off, type in bits 24-31. All ones when
    // there is no such input.
    virtual std::uint32_t BASS_RecordGetInput(int input) const = 0;
    // BASS_INPUT_OFF, BASS_INPUT_ON, or BASS_INPUT_LEVEL with a level in bits 0-15.
    virtual bool BASS_RecordSetInput(int input, std::uint32_t setting) = 0;
    // Prepares a capture of the inputs that are on; blocks come from BASS_ChannelPlay on. Only 44100 Hz
    // stereo, always 16-bit. 0 on failure. Waits for the sound server where one of its inputs is on.
    virtual Handle BASS_RecordStart(std::uint32_t freq, std::uint32_t chans, std::uint32_t flags, RecordProc proc,
                                    void* user) = 0;

    // --- Encoder add-on --------------------------------------------------------------------------------
    // Tells whether there is a program for `commandLine` that may be run. Asks the disks of the search path: to be
    // called on any thread, also one that outlives the library.
    virtual std::function<bool()> encoderSearch(const std::string& commandLine) const = 0;
    // Starts the program of `commandLine` without a shell and feeds it a WAV header and then everything
    // captured on `handle`. Words are separated by blanks; a word in double quotes may hold blanks, and a
    // backslash there takes the next character as it is.
    virtual bool BASS_Encode_Start(Handle handle, const char* commandLine, std::uint32_t flags, void* proc,
                                   void* user) = 0;
    // True while the encoder runs, also after the stop until its file is finished.
    virtual bool BASS_Encode_IsActive(Handle handle) const = 0;
    // Ends the encoder's input behind what was captured so far and returns at once; an encoder that then
    // takes nothing for 60 s is ended.
    virtual bool BASS_Encode_Stop(Handle handle) = 0;
    // The encoder is to be done within ten seconds: what it has not taken in the first five is dropped, and it is ended
    // after nine.
    virtual void hurryEncoder(Handle handle) = 0;
    // For how many seconds the encoder has taken nothing of what waits for it. On a clock that runs by itself ten
    // minutes of sound may wait, then the encoder is ended; on the stepped clock it is ended after 60 s.
    virtual double encoderStalled(Handle handle) const = 0;
    // Stays answerable after the capture was stopped, until the next BASS_RecordStart.
    virtual EncoderState encoderState(Handle handle) const = 0;
    // The frames that the encoder of a capture has been given, answerable as long as encoderState.
    virtual std::int64_t framesEncoded(Handle handle) const = 0;
};

// What a process says when it makes the library.
enum class CardClock {
    device,   // the sound device asks for frames; the machine's clock where there is none or it vanishes
    machine,  // real time without a device
    stepped,  // the caller asks for frames, as fast as they can be made
};

struct AudioLibraryOptions {
    CardClock clock = CardClock::device;
    std::uint32_t blockFrames = 441;  // frames mixed at a time, 16..8192; never changes the samples
    std::string programDirectory;     // where the encoder is looked for first
};

// Exported by the library file under these names.
using BASS_GetVersionFunction = std::uint32_t (*)();
using CreateAudioLibraryFunction = AudioLibrary* (*)(const AudioLibraryOptions&);
inline constexpr const char* kBASS_GetVersionSymbol = "BASS_GetVersion";
inline constexpr const char* kCreateAudioLibrarySymbol = "createAudioLibrary";

}  // namespace melvane
