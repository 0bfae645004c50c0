#include "settings/language_tables.h"

namespace melvane {

namespace {

// The texts stand as users know them; 8 is crossed, and some compose with a channel number differently.
constexpr LanguageRow kRows[] = {
    {0, "Pliki audio", "Audio files"},
    {1, "Najpierw wybierz pliki do miksowania.", "First select mixing source files."},
    {2, "Skompresowane plik audio", "Compressed audio file"},
    {3, "Nie można zainicjować urządzenia audio", "Can't initialize audio device."},
    {4, "Biblioteka audio nie istnieje.", "Audio library does not exists."},
    {5, "Niewprawidłowa wersja biblioteki audio.", "Incorrect Audio library version."},
    {6, "Niezainstalowany DirectX wersja 8 lub wyższa.", "DirectX 8 or above is not installed"},
    {7, "Nie wybrano plików do miksowania.", "Source or destiny files not defined."},
    {8, "You must stop mixing first.", "Zakończ miksowanie."},
    {9, "Nie udała się próba zapisu do pliku MP3...", "Couldn 't start encoding to MP3 file..."},
    {10, "home.pl.html", "home.en.html"},
    {13, "D A L E J", "CO NT I N U E"},
    {19, "Ustawienia Audio", "Audio settings"},
    {20, "Język", "Language"},
    {21, "Odtwarzanie midi", "Midi device"},
    {22, "Urządzenie miksujące", "Mixing device"},
    {23, "(wybierz własne ustawienie jeśli miksowanie nie działa)", "(select own settings if mixing doesn't work)"},
    {24, "Stosuj wskazane urządzenie", "Force selected device"},
    {25, "POMOC ONLINE", "TUTORIAL ONLINE"},
    {26, "help.pl.html", "help.en.html"},
    {27, "Podany plik już istnieje.\r\nCzy chcesz kontynuować?", "Do you want to overwrite existing file?"},
    {28, "Błąd funkcji obsługi bass & treble", "Error: bass & treble function"},
    {29, "Funkcja interfejsu midi nie powiodła się.", "Midi interface operation couldn't be applied."},
    {30, "Plik midi nie mógł być odtworzony.", "Midi file couldn't be played."},
    {31, "Mie można zainicjować interfejsu midi", "Midi interface didn't initialize."},
    {32, "Miksowanie nie mogło być zainicjowane.", "Mixing couldn't be initialized."},
    {33, "Błąd przy próbie odtwarzania pliku Midi", "Error playing Midi file"},
    {50, "Zamknij", "Close"},
    {51, "Wskaż podkład karaoke", "Browse for karaoke background"},
    {52, "Wskaż plik z vocalem", "Browse for vocals"},
    {53, "Wskaż docelowy plik miksowania", "Browse for  mixing destination file"},
    {54, "Głośność podkładu karaoke", "Song volume"},
    {55, "Głośność vocalu", "Vocal volume"},
    {56, "Synchronizacja", "Synchronization"},
    {57, "Tony niskie podkładu karaoke", "Karaoke background Bass"},
    {58, "Tony wysokie podkładu karaoke", "Karaoke background Treble"},
    {59, "Tony niskie dla Vocalu", "Vocal Treble"},
    {60, "Tony wysokie dla Vocalu", ""},
    {61, "Balans podkładu Karaoke", "Karaoke background Balance"},
    {62, "Balans dla Vocalu", "Vocal balance"},
    {63, "Głośność kanału ", "Channel "},
    {64, "", " volume"},
    {65, "Balans kanału ", " balance"},
    {66, "Wł/wył kanał ", "Switch on/off channel "},
    {67, "Ustawienie domyślne", "Reset"},
    {80, "Tylko dźwięk stereo umożliwia usunięcie vocalu.", "Only stereo sources are supported."},
    {81, "Usunięcie vocalu dla formatu MIDI jest niemożliwe.Spróbuj wyłączyć odpowiedni kanał midi (najczęściej 4-ty).",
     "Removing vocals for MIDI standard is not allowed.Try switch off one of midi channels (4 is default)."},
    {84, "Pomoc online", "Help online"},
    {85, "Otwórz podkład karaoke...", "Load karaoke background..."},
    {86, "Otwórz plik z vocalem..", "Load vocal file..."},
    {87, "Wybierz plik docelowy miksowania...", "Select destination file..."},
    {89, "Ustawienia", "Preferences"},
    {90, "Zamknij", "Close"},
    {91, "Przywróć oryginalne ustawienia midi", "Restore midi settings"},
};

}  // namespace

std::span<const LanguageRow> languageRows() {
    return kRows;
}

}  // namespace melvane
