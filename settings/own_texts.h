// Labels, states and messages that have no number in the language tables.
#pragma once

namespace melvane {

// In the order of the table. "%1" in a text stands for what is named behind the enumerator.
enum class OwnText {
    // The start window.
    tagLine,
    continueToMixer,
    // Fields and controls of the main window.
    karaokeBackground,
    vocalRecording,
    mixingDestination,
    mix,
    stop,
    keyShift,
    effects,
    mixProgress,
    songColumn,
    voiceColumn,
    syncColumn,
    keyColumn,
    voiceEarlier,  // seconds
    voiceLater,    // seconds
    earlier,
    later,
    midiKey,  // semitones
    dropSongHere,
    dropVoiceHere,
    dropDestinationHere,
    midiButton,
    midiChannels,
    listen,
    listenToLastMix,
    recentFiles,
    noRecentFiles,
    songLevel,
    voiceLevel,
    mixLevel,
    lampMeaning,
    limiterMeaning,
    menuButton,
    minimise,
    backToMain,
    cannotUseFiles,  // files
    cannotUseAddresses,
    // The dialogs for files.
    openSong,
    openVoice,
    saveMix,
    anySound,
    allFiles,
    songOrVoice,  // file
    // Jobs: documents, undo, the fast mix.
    openJob,
    openJobHere,
    saveJob,
    saveJobAs,
    lastJob,
    jobFiles,
    saveChanges,    // file
    jobFilesGone,   // files
    cannotOpenJob,  // file
    cannotSaveJob,  // file
    noJobInFile,
    jobIsNewer,
    jobValueWrong,  // field
    undo,
    undoChange,  // what
    redo,
    redoChange,  // what
    severalSettings,
    voicePlace,
    voiceTrim,
    channelSolo,  // number
    mixFast,
    mixingFast,
    matchLevels,
    matchLevelsMeaning,
    matchingLevels,  // per cent
    levelsMatched,   // LU
    levelsTrim,      // dB
    levelsSong,      // per cent
    levelsNoSong,
    levelsNoVoice,
    levelsOutOfReach,
    measuringMix,  // per cent
    mixLoudness,
    mixLoudnessMeaning,
    mixLoudnessOff,
    mixMissesTarget,  // file
    timeLeft,         // time
    cancelFastMix,
    cancelFastMixMeaning,
    mixCancelled,
    fastOtherInput,
    fastOtherPort,
    // Tags of the mix.
    tags,
    tagsOfMix,
    tagTitle,
    tagArtist,
    tagAlbum,
    tagYear,
    tagGenre,
    noTag,
    cover,
    chooseCover,
    chooseCoverHere,
    removeCover,
    writeTags,
    songsTags,
    pictures,
    noCover,
    cannotUseCover,  // file
    coverUnread,
    coverNoPicture,
    coverTooLarge,
    mixLacksTags,
    mixLacksCover,
    // Errors that end an action.
    numberTooLarge,
    outOfMemory,
    internalError,
    unexpectedError,  // as the system tells it
    // Controls of the effects window.
    equaliser,
    equaliserPresets,
    reverb,
    echo,
    chorus,
    flanger,
    spareEffect,
    spareHint,
    effectLevel,  // effect
    bass,
    treble,
    vocalBass,
    vocalTreble,
    balance,
    // The channels window and the picker of instruments.
    noMidiSong,
    channelInstrument,  // number
    songSets,           // value
    songSetsNothing,
    volumeRow,
    balanceRow,
    soloMeaning,
    soloOn,
    instrumentPicker,  // number
    instruments,
    // Preferences.
    languageAndHelp,
    zoom,
    homePage,
    linesUpVoices,
    linesUpMeaning,
    cannotOpenPage,  // address
    about,
    aboutProgram,
    noDevices,
    synthesizer,
    deviceGone,  // device
    // The player.
    play,
    playing,
    pause,
    playerStop,
    playPosition,
    cannotPlayFile,  // file
    // The timeline.
    rehearsal,
    rehearse,
    stopRehearsal,
    stepBack,
    stepForth,
    loopFromHere,
    loopToHere,
    noLoop,
    zoomIn,
    zoomOut,
    wholeSong,
    rulerMeaning,
    shownPart,
    voicePlaceMeaning,
    voiceWithSong,
    voiceBeforeSong,  // seconds
    voiceAfterStart,  // seconds
    trimField,
    voiceTrimMeaning,
    lineUp,
    lineUpMeaning,
    giveUpLineUpMeaning,
    liningUp,       // percent
    linedUp,        // percent
    linedUpBefore,  // seconds
    linedUpAfter,   // seconds
    linedUpWith,
    howSure,  // percent
    noTrace,
    mixFastMeaning,
    rehearsing,
    voiceOutsideSong,
    rehearsalUnheard,
    rehearsalSongLost,   // file
    rehearsalVoiceLost,  // file
    // What a run is doing.
    ready,
    opening,
    openingShare,  // per cent
    mixing,
    finishingFile,
    mixFinished,  // file
    loudness,     // LUFS
    loudnessRange,
    truePeak,
    soundIsSilence,
    noLoudness,
    mixIsSilent,  // file
    stopped,
    partKept,          // file
    interruptedMix,    // file
    interruptedMixes,  // how many; the last file follows
    playsSilently,
    portOutsideMix,
    portGone,   // port
    inputGone,  // input
    portLost,
    inputLost,
    mixLacksVoice,  // file
    mixLacksInput,
    // Why a run did not begin or did not end well.
    cannotOpenBackground,  // file
    cannotOpenVocal,       // file
    backgroundLost,        // file
    vocalLost,             // file
    mixedUntilThen,        // file
    noThread,
    encoderStalled,
    destinationIsSource,
    cannotWriteDestination,  // file
    destinationExists,       // file
    destinationBusy,         // file
    noMixInput,
    captureFailed,
    encoderNotFound,  // program
    encoderNotRun,    // program
    encoderFailed,    // file
    encoderCure,      // program
    // Why the settings are not kept.
    settingsNotKept,
    diskFull,
    settingsFolderRefuses,
    // Causes of a failed run.
    noSoundInFile,
    needsDecoder,   // program
    decoderNotRun,  // program
    noRoomToDecode,
    noRoomToKeep,
    noSuchFile,
    noSuchFolder,
    deadLink,
    noPlaceForFile,
    longName,
    mayNotRead,
    mayNotWrite,
    tooManyFiles,
    diskFails,
    count
};

struct OwnTextRow {
    OwnText text;
    const char* polish;
    const char* english;
};

// `text` is one of the enumerators before `count`.
const OwnTextRow& ownTextRow(OwnText text);

}  // namespace melvane
