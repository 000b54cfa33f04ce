// Every text of the window, in Italian for all locales.
#pragma once

#include <QStringView>

namespace tavo::texts {

inline constexpr QStringView kProgramName = u"Tavo Launcher";
inline constexpr QStringView kOpenLauncher = u"Apri Tavo Launcher";
inline constexpr QStringView kQuitLauncher = u"Esci da Tavo Launcher";
inline constexpr QStringView kCategories = u"Categorie";
inline constexpr QStringView kApplications = u"App";
inline constexpr QStringView kSearchPrompt = u"Cerca app o categoria…";
inline constexpr QStringView kSearchSuggestions = u"Suggerimenti di ricerca";
inline constexpr QStringView kSuggestRecent = u"Recenti";
inline constexpr QStringView kSuggestFavorites = u"Preferite";
inline constexpr QStringView kSuggestCategory = u"Categoria: ";
inline constexpr QStringView kReload = u"Aggiorna app";
inline constexpr QStringView kCountSuffix = u" app";
inline constexpr QStringView kCredit = u"Powered by qt.io";
inline constexpr QStringView kCreditAddress = u"https://www.qt.io";
inline constexpr QStringView kNoApps = u"Nessuna app";
inline constexpr QStringView kFirstApp = u", la prima: ";
inline constexpr QStringView kReloaded = u"Elenco aggiornato: ";
inline constexpr QStringView kFavorite = u"Preferita";
inline constexpr QStringView kHasBecomeFavorite = u"Aggiunta ai preferiti: ";
inline constexpr QStringView kIsNoFavorite = u"Rimossa dai preferiti: ";
inline constexpr QStringView kIsHidden = u"Nascosta dall’elenco: ";
inline constexpr QStringView kIsShown = u"Mostrata nell’elenco: ";
inline constexpr QStringView kAssignedTo = u"Aggiunta a ";
inline constexpr QStringView kRemovedFrom = u"Rimossa da ";
inline constexpr QStringView kOpenPrefix = u"Apri ";
inline constexpr QStringView kAddFavorite = u"Aggiungi ai preferiti";
inline constexpr QStringView kRemoveFavorite = u"Rimuovi dai preferiti";
inline constexpr QStringView kHide = u"Nascondi dall’elenco";
inline constexpr QStringView kShow = u"Mostra nell’elenco";
inline constexpr QStringView kLaunchErrorTitle = u"Impossibile aprire l’app";
inline constexpr QStringView kOk = u"OK";
inline constexpr QStringView kScrollBar = u"Barra di scorrimento";
inline constexpr QStringView kLevelPrefix = u"Livello ";
inline constexpr QStringView kClose = u"Chiudi";
inline constexpr QStringView kEditCategories = u"Modifica categorie";
inline constexpr QStringView kEditorExplanation =
    u"Aggiungi parole chiave separate da virgole per assegnare le app in automatico; "
    u"puoi anche usare il clic destro.";
inline constexpr QStringView kCategoryName = u"Nome categoria";
inline constexpr QStringView kPosition = u"Posizione";
inline constexpr QStringView kTopLevel = u"Categoria principale";
inline constexpr QStringView kSubcategoryOf = u"Sottocategoria di ";
inline constexpr QStringView kKeywords = u"Parole chiave automatiche, separate da virgole";
inline constexpr QStringView kDeleteCategory = u"Elimina categoria";
inline constexpr QStringView kNewCategory = u"Nuova categoria";
inline constexpr QStringView kAdd = u"Aggiungi";
inline constexpr QStringView kCancel = u"Annulla";
inline constexpr QStringView kSave = u"Salva";

}  // namespace tavo::texts
