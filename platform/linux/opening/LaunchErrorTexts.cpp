#include "platform/linux/opening/LaunchErrorTexts.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <string_view>

#include "support/Text.h"

namespace tavo::messages {
namespace {

std::string quoted(const std::string& text) {
    return "«" + repairedUtf8(text) + "»";
}

// `text`, which the system gave, with a full stop at its end.
std::string sentence(const std::string& text) {
    const std::string words = repairedUtf8(text);
    return words.ends_with('.') ? words : words + '.';
}

std::string_view reasonText(int code) {
    switch (code) {
        case ENOENT:
        case ENOTDIR:
            return "il file non esiste";
        case EACCES:
        case EPERM:
            return "il permesso è negato";
        case EINVAL:
            return "non è un file normale";
        case EFBIG:
            return "il file è troppo grande";
        case ELOOP:
            return "i collegamenti simbolici si rincorrono";
        case ENAMETOOLONG:
            return "il nome è troppo lungo";
        case EIO:
            return "il disco non risponde come dovrebbe";
        case ENOEXEC:
            return "il formato del file non è quello di un programma";
        case ETXTBSY:
            return "il file è aperto in scrittura";
        case ENOMEM:
            return "la memoria non basta";
        case EAGAIN:
            return "i processi in esecuzione sono troppi";
        case EMFILE:
        case ENFILE:
            return "i file aperti sono troppi";
        case E2BIG:
            return "gli argomenti o l’ambiente sono troppo grandi";
        default:
            return {};
    }
}

std::string reason(int code) {
    const std::string_view text = reasonText(code);
    return text.empty() ? "errore di sistema " + std::to_string(code) : std::string(text);
}

std::string signalName(int signal) {
    const char* const name = sigabbrev_np(signal);
    return name != nullptr ? std::string("SIG") + name : std::to_string(signal);
}

std::string describedProgram(const std::string& program, const std::string& name) {
    const std::string file = program.substr(program.rfind('/') + 1);
    const std::string text = "Il programma " + quoted(program);
    return name.empty() || name == program || name == file ? text
                                                           : text + " dell’app " + quoted(name);
}

}  // namespace

Error applicationMissing(const std::string& path) {
    return {"L’app " + quoted(path) + " non esiste più."};
}

Error applicationNotReadable(const std::string& path, int code) {
    return {"L’app " + quoted(path) + " non si può leggere: " + reason(code) + "."};
}

Error notAnApplication(const std::string& path) {
    return {quoted(path) + " non è un’app: non è una cartella e non è una voce di menu."};
}

Error entryNotReadable(const std::string& path, int code) {
    return {"La voce di menu " + quoted(path) + " non si può leggere: " + reason(code) + "."};
}

Error entryInvalid(const std::string& path) {
    return {"Il file " + quoted(path) + " non è la voce di menu di un’app."};
}

Error entryHidden(const std::string& path) {
    return {"La voce di menu " + quoted(path) + " è segnata come rimossa (Hidden)."};
}

Error entryWithoutCommand(const std::string& path) {
    return {"La voce di menu " + quoted(path) + " non dice quale programma avviare (manca Exec)."};
}

Error entryCommandUnreadable(const std::string& path, const std::string& command) {
    return {"La voce di menu " + quoted(path) +
            " contiene un comando che non si può leggere: " + quoted(command) + "."};
}

Error programNotFound(const std::string& program, const std::string& searchPath) {
    return {"Il programma " + quoted(program) +
            " non è stato trovato (cercato in: " + repairedUtf8(searchPath) + ")."};
}

Error programMissing(const std::string& program) {
    return {"Il programma " + quoted(program) + " non esiste."};
}

Error programIsFolder(const std::string& program) {
    return {"Il programma " + quoted(program) + " è una cartella e non si può avviare."};
}

Error programNotExecutable(const std::string& program) {
    return {"Il programma " + quoted(program) + " non ha il permesso di essere eseguito."};
}

Error interpreterMissing(const std::string& program, const std::string& interpreter) {
    return {"Il programma " + quoted(program) + " richiede l’interprete " + quoted(interpreter) +
            ", che non esiste o non si può eseguire."};
}

Error workingDirectoryMissing(const std::string& program, const std::string& folder) {
    return {"Il programma " + quoted(program) + " deve partire nella cartella " + quoted(folder) +
            ", che non esiste o non è accessibile."};
}

Error terminalMissing(const std::string& program) {
    return {"Il programma " + quoted(program) +
            " si usa in un terminale, ma non è stato trovato alcun terminale adatto."};
}

Error bundleWithoutProgram(const std::string& path) {
    return {"L’app " + quoted(path) + " non contiene un programma da avviare."};
}

Error startRefused(const std::string& program, int code) {
    return {"Il programma " + quoted(program) + " non si può avviare: " + reason(code) + "."};
}

Error endedWithStatus(const std::string& program, const std::string& name, int status) {
    return {describedProgram(program, name) +
            " si è chiuso subito dopo l’avvio con il codice di errore " + std::to_string(status) +
            "."};
}

Error endedBySignal(const std::string& program, const std::string& name, int signal) {
    return {describedProgram(program, name) +
            " è stato interrotto subito dopo l’avvio dal segnale " + signalName(signal) + "."};
}

Error serviceMissing(const std::string& name) {
    return {"L’app " + quoted(name) +
            " non si può attivare: nessun servizio D-Bus ha questo nome."};
}

Error activationFailed(const std::string& name, const std::string& systemText) {
    return {"L’app " + quoted(name) + " non ha accettato l’attivazione: " + sentence(systemText)};
}

Error activationUnanswered(const std::string& name) {
    return {"L’app " + quoted(name) + " non ha risposto alla richiesta di attivazione."};
}

Error busSilent(const std::string& name) {
    return {"L’app " + quoted(name) + " non si può attivare: il bus di sessione non risponde."};
}

}  // namespace tavo::messages
