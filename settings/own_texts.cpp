#include "settings/own_texts.h"

#include <cstddef>
#include <iterator>

namespace melvane {

namespace {

constexpr OwnTextRow kRows[] = {
    {OwnText::tagLine, "Podkład karaoke i Twój głos w jednym MP3", "Karaoke and your voice in one MP3"},
    {OwnText::continueToMixer, "Dalej", "Continue"},
    {OwnText::karaokeBackground, "Podkład karaoke", "Karaoke background"},
    {OwnText::vocalRecording, "Nagranie wokalu", "Vocal recording"},
    {OwnText::mixingDestination, "Plik docelowy miksowania", "Mixing destination"},
    {OwnText::mix, "Miksuj", "Mix"},
    {OwnText::stop, "Stop", "Stop"},
    {OwnText::keyShift, "Tonacja podkładu karaoke", "Karaoke background key"},
    {OwnText::effects, "Efekty", "Effects"},
    {OwnText::mixProgress, "Postęp miksowania", "Progress of the mix"},
    {OwnText::songColumn, "Podkład", "Song"},
    {OwnText::voiceColumn, "Wokal", "Voice"},
    {OwnText::syncColumn, "Synchro", "Sync"},
    {OwnText::keyColumn, "Tonacja", "Key"},
    {OwnText::voiceEarlier, "wokal %1 s wcześniej", "voice %1 s earlier"},
    {OwnText::voiceLater, "wokal %1 s później", "voice %1 s later"},
    {OwnText::earlier, "wcześniej", "earlier"},
    {OwnText::later, "później", "later"},
    {OwnText::midiKey, "Podkład MIDI zmienia tonację o całe półtony: brzmi %1.",
     "A MIDI song moves by whole semitones: %1 sounds."},
    {OwnText::dropSongHere, "Upuść tu podkład karaoke", "Drop a song here"},
    {OwnText::dropVoiceHere, "Upuść tu nagranie głosu", "Drop your voice here"},
    {OwnText::dropDestinationHere, "Wskaż, gdzie zapisać miks", "Choose where the mix goes"},
    {OwnText::midiButton, "MIDI", "MIDI"},
    {OwnText::midiChannels, "Kanały MIDI", "MIDI channels"},
    {OwnText::listen, "Odsłuch", "Listen"},
    {OwnText::listenToLastMix, "Odsłuchaj ostatni miks", "Listen to the last mix"},
    {OwnText::recentFiles, "Ostatnie pliki", "Recent files"},
    {OwnText::noRecentFiles, "(brak)", "(none)"},
    {OwnText::songLevel, "Poziom podkładu", "Song level"},
    {OwnText::voiceLevel, "Poziom głosu", "Voice level"},
    {OwnText::mixLevel, "Poziom miksu", "Mix level"},
    {OwnText::lampMeaning,
     "Czerwona lampka: głośniej, niż mieści się w zapisie. Ogranicznik ścisza miks w tym miejscu.",
     "Red lamp: louder than a recording can hold. The limiter turns the mix down there."},
    {OwnText::limiterMeaning, "O tyle ogranicznik ścisza miks. Mniejsza głośność podkładu lub wokalu tego uniknie.",
     "So much the limiter turns the mix down. A lower volume of song or voice avoids it."},
    {OwnText::menuButton, "Menu", "Menu"},
    {OwnText::backToMain, "Powrót do głównego okna", "Back to the main window"},
    {OwnText::cannotUseFile, "Nie można użyć tego pliku: %1", "This file cannot be used: %1"},
    {OwnText::openSong, "Otwórz podkład", "Open song"},
    {OwnText::openVoice, "Otwórz nagranie głosu", "Open voice"},
    {OwnText::saveMix, "Zapisuj miks tutaj", "Save mix here"},
    {OwnText::allFiles, "Wszystkie pliki", "All files"},
    {OwnText::equaliser, "Korektor", "Equaliser"},
    {OwnText::equaliserPresets, "Ustawienia korektora", "Equaliser presets"},
    {OwnText::reverb, "Pogłos", "Reverb"},
    {OwnText::echo, "Echo", "Echo"},
    {OwnText::chorus, "Chorus", "Chorus"},
    {OwnText::flanger, "Flanger", "Flanger"},
    {OwnText::spareEffect, "Rezerwa", "Spare"},
    {OwnText::spareHint, "Ten przełącznik nie jest używany.", "This switch is not in use."},
    {OwnText::effectLevel, "%1: poziom", "%1: level"},
    {OwnText::bass, "Niskie", "Bass"},
    {OwnText::treble, "Wysokie", "Treble"},
    {OwnText::vocalBass, "Tony niskie wokalu", "Vocal bass"},
    {OwnText::vocalTreble, "Tony wysokie wokalu", "Vocal treble"},
    {OwnText::balance, "Balans", "Balance"},
    {OwnText::noMidiSong, "Wybierz podkład MIDI, aby zobaczyć jego kanały.",
     "Choose a MIDI background to see its channels."},
    {OwnText::channelInstrument, "Instrument kanału %1", "Instrument of channel %1"},
    {OwnText::songSets, "Ustawienie z samego utworu: %1", "The song's own setting: %1"},
    {OwnText::songSetsNothing, "Utwór sam nic tu nie ustawia.", "The song itself sets nothing here."},
    {OwnText::volumeRow, "Głośność", "Volume"},
    {OwnText::balanceRow, "Balans", "Balance"},
    {OwnText::instrumentPicker, "Kanał %1", "Channel %1"},
    {OwnText::instruments, "Instrumenty", "Instruments"},
    {OwnText::languageAndHelp, "Język i pomoc", "Language and help"},
    {OwnText::zoom, "Wielkość okien", "Size of the windows"},
    {OwnText::homePage, "Strona domowa", "Home page"},
    {OwnText::cannotOpenPage, "Nie można otworzyć strony: %1", "The page cannot be opened: %1"},
    {OwnText::noDevices, "(brak urządzeń)", "(no devices)"},
    {OwnText::deviceGone, "Nie ma już urządzenia „%1”.", "The device %1 has gone."},
    {OwnText::play, "Odtwórz", "Play"},
    {OwnText::pause, "Pauza", "Pause"},
    {OwnText::playerStop, "Zatrzymaj", "Stop"},
    {OwnText::playPosition, "Pozycja odtwarzania", "Playing position"},
    {OwnText::cannotPlayFile, "Nie można odtworzyć pliku: %1", "This file cannot be played: %1"},
    {OwnText::ready, "Gotowy do pracy", "Ready"},
    {OwnText::opening, "Otwieranie…", "Opening…"},
    {OwnText::mixing, "Miksowanie…", "Mixing…"},
    {OwnText::finishingFile, "Kończenie zapisu pliku MP3…", "Finishing the MP3 file…"},
    {OwnText::mixFinished, "Miksowanie zakończone: %1", "Mix finished: %1"},
    {OwnText::mixIsSilent, "Miks zawiera tylko ciszę, bo żadne wejście nie było włączone: %1",
     "The mix holds nothing but silence, because no input was on: %1"},
    {OwnText::stopped, "Zatrzymano", "Stopped"},
    {OwnText::playsSilently, "Brak urządzenia dźwiękowego: miksu nie słychać, ale jest nagrywany.",
     "No sound device: the mix cannot be heard, but it is recorded."},
    {OwnText::portOutsideMix, "Dźwięku tego portu MIDI nie ma w miksie, chyba że nagrywa go wejście.",
     "The sound of this MIDI port is not in the mix unless an input records it."},
    {OwnText::portGone, "Nie ma portu MIDI „%1” lub nie daje się otworzyć: gra wbudowany syntezator.",
     "The MIDI port %1 has gone or cannot be opened: the built-in synthesizer plays."},
    {OwnText::inputGone, "Nie ma już wejścia „%1”: miks nagrywa ciszę. Wskaż inne w ustawieniach.",
     "The input %1 has gone: the mix records silence. Choose another one in the preferences."},
    {OwnText::cannotOpenBackground, "Nie można otworzyć podkładu: %1", "The background cannot be opened: %1"},
    {OwnText::cannotOpenVocal, "Nie można otworzyć nagrania wokalu: %1", "The vocal recording cannot be opened: %1"},
    {OwnText::destinationIsSource, "Plik docelowy jest jednym z plików źródłowych. Wybierz inną nazwę.",
     "The destination is one of the source files. Choose another name."},
    {OwnText::cannotWriteDestination, "Nie można zapisać pliku docelowego: %1",
     "The destination cannot be written: %1"},
    {OwnText::noMixInput, "Uwaga: nagrywana jest cisza, bo żadne wejście nie jest włączone. Wskaż je w ustawieniach.",
     "Warning: silence is recorded, because no input is on. Choose one in the preferences."},
    {OwnText::captureFailed, "Nie udało się rozpocząć nagrywania miksu.", "The mix could not be recorded."},
    {OwnText::encoderNotFound, "Nie znaleziono programu kodującego MP3: %1", "The MP3 encoder was not found: %1"},
    {OwnText::encoderFailed, "Kodowanie nie powiodło się, plik MP3 jest niekompletny: %1",
     "The encoder failed, the MP3 file is incomplete: %1"},
};

constexpr bool inOrder() {
    for (std::size_t i = 0; i < std::size(kRows); ++i)
        if (kRows[i].text != static_cast<OwnText>(i)) return false;
    return std::size(kRows) == static_cast<std::size_t>(OwnText::count);
}
static_assert(inOrder(), "one row for each text, in the order of the enumerators");

}  // namespace

const OwnTextRow& ownTextRow(OwnText text) {
    return kRows[static_cast<std::size_t>(text)];
}

}  // namespace melvane
