#include "Platform/KRPasteboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHash>
#include <QMimeData>
#include <QPointer>

namespace {

constexpr auto kPlainTextMime = "text/plain";
// Parameters follow a MIME name after this separator ("text/plain;charset=utf-8").
constexpr QChar kMimeParameterSeparator = u';';
constexpr QChar kMimeSubtypeSeparator = u'/';
constexpr auto kPrivateMimePrefix = "application/x-";

// Types registered with their MIME names, both ways.
struct KRPasteboardMimeRegistry {
    QHash<QString, QString> mimeTypesByType;
    QHash<QString, QString> typesByMimeType;
};

KRPasteboardMimeRegistry& mimeRegistry() {
    static KRPasteboardMimeRegistry registry;
    return registry;
}

bool isPlainTextMimeType(const QString& mimeType) {
    const QString plainText = QLatin1String(kPlainTextMime);
    return mimeType == plainText || mimeType.startsWith(plainText + kMimeParameterSeparator);
}

class KRInMemoryPasteboard final : public KRPasteboard {};

// Mirrors every write into the system clipboard as one QMimeData holding all the types of the current copy,
// and reads back whatever the clipboard holds (which another application may have put there).
class KRClipboardPasteboard final : public KRPasteboard {
public:
    KRClipboardPasteboard() { connectIfPossible(); }
    ~KRClipboardPasteboard() override { QObject::disconnect(m_connection); }

protected:
    KRInteger readChangeCount() const override {
        const_cast<KRClipboardPasteboard*>(this)->connectIfPossible();
        return KRPasteboard::readChangeCount();
    }

    void contentsDidChange() override {
        connectIfPossible();
        QClipboard* board = clipboard();
        if (!board) {
            return;
        }
        auto* mimeData = new QMimeData;
        for (const QString& type : declaredTypes()) {
            const auto found = storedData().find(type);
            if (found == storedData().end()) {
                continue;
            }
            if (type == KRPasteboardTypeString) {
                mimeData->setText(QString::fromUtf8(found->second));
            } else {
                mimeData->setData(mimeTypeForType(type), found->second);
            }
        }
        m_publishing = true;
        board->setMimeData(mimeData);
        m_publishing = false;
        m_published = mimeData;
    }

    std::optional<QByteArray> readData(const QString& type) const override {
        const QMimeData* mimeData = currentMimeData();
        if (!mimeData) {
            return KRPasteboard::readData(type);
        }
        if (type == KRPasteboardTypeString) {
            if (!mimeData->hasText()) {
                return std::nullopt;
            }
            return mimeData->text().toUtf8();
        }
        const QString mimeType = mimeTypeForType(type);
        if (!mimeData->hasFormat(mimeType)) {
            return std::nullopt;
        }
        return mimeData->data(mimeType);
    }

    QStringList readTypes() const override {
        const QMimeData* mimeData = currentMimeData();
        if (!mimeData) {
            return KRPasteboard::readTypes();
        }
        // Our own copy keeps its declared order; a foreign one lists its formats.
        if (mimeData == m_published.data()) {
            return KRPasteboard::readTypes();
        }
        QStringList result;
        if (mimeData->hasText()) {
            result.append(KRPasteboardTypeString);
        }
        for (const QString& format : mimeData->formats()) {
            const QString type = typeForMimeType(format);
            if (!result.contains(type)) {
                result.append(type);
            }
        }
        return result;
    }

private:
    // Counts changes made by others; waits for the application when made before it.
    void connectIfPossible() {
        if (m_connection) {
            return;
        }
        if (QClipboard* board = clipboard()) {
            m_connection = QObject::connect(board, &QClipboard::dataChanged, [this] {
                if (!m_publishing) {
                    bumpChangeCount();
                }
            });
        }
    }
    static QClipboard* clipboard() {
        return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) ? QGuiApplication::clipboard()
                                                                            : nullptr;
    }
    const QMimeData* currentMimeData() const {
        QClipboard* board = clipboard();
        return board ? board->mimeData() : nullptr;
    }

    QMetaObject::Connection m_connection;
    QPointer<QMimeData> m_published;
    bool m_publishing = false;
};

std::shared_ptr<KRPasteboard>& installedGeneralPasteboard() {
    static std::shared_ptr<KRPasteboard> pasteboard;
    return pasteboard;
}

} // namespace

KRPasteboard::~KRPasteboard() = default;

std::shared_ptr<KRPasteboard> KRPasteboard::generalPasteboard() {
    std::shared_ptr<KRPasteboard>& pasteboard = installedGeneralPasteboard();
    if (!pasteboard) {
        pasteboard = std::make_shared<KRClipboardPasteboard>();
    }
    return pasteboard;
}

void KRPasteboard::setGeneralPasteboard(std::shared_ptr<KRPasteboard> pasteboard) {
    installedGeneralPasteboard() = std::move(pasteboard);
}

std::shared_ptr<KRPasteboard> KRPasteboard::makeInMemory() {
    return std::make_shared<KRInMemoryPasteboard>();
}

QString KRPasteboard::registerMimeTypeForType(const QString& mimeType, const QString& type) {
    if (!mimeType.isEmpty() && !type.isEmpty()) {
        KRPasteboardMimeRegistry& registry = mimeRegistry();
        registry.mimeTypesByType.insert(type, mimeType);
        registry.typesByMimeType.insert(mimeType, type);
    }
    return type;
}

QString KRPasteboard::mimeTypeForType(const QString& type) {
    const KRPasteboardMimeRegistry& registry = mimeRegistry();
    if (const auto found = registry.mimeTypesByType.constFind(type);
        found != registry.mimeTypesByType.cend()) {
        return found.value();
    }
    if (type == KRPasteboardTypeString) {
        return QLatin1String(kPlainTextMime);
    }
    if (type.contains(kMimeSubtypeSeparator)) {
        return type;
    }
    return QLatin1String(kPrivateMimePrefix) + type;
}

QString KRPasteboard::typeForMimeType(const QString& mimeType) {
    const KRPasteboardMimeRegistry& registry = mimeRegistry();
    if (const auto found = registry.typesByMimeType.constFind(mimeType);
        found != registry.typesByMimeType.cend()) {
        return found.value();
    }
    if (isPlainTextMimeType(mimeType)) {
        return KRPasteboardTypeString;
    }
    const QString prefix = QLatin1String(kPrivateMimePrefix);
    if (mimeType.startsWith(prefix)) {
        const QString type = mimeType.mid(prefix.size());
        if (!type.isEmpty() && mimeTypeForType(type) == mimeType) {
            return type;
        }
    }
    return mimeType;
}

KRInteger KRPasteboard::declareTypes(const QStringList& types, KRObject* owner) {
    m_declaredTypes.clear();
    for (const QString& type : types) {
        if (!type.isEmpty() && !m_declaredTypes.contains(type)) {
            m_declaredTypes.append(type);
        }
    }
    m_data.clear();
    m_owner.reset(owner);
    const KRInteger count = bumpChangeCount();
    contentsDidChange();
    return count;
}

bool KRPasteboard::setData(const QByteArray& data, const QString& type) {
    if (!m_declaredTypes.contains(type)) {
        return false;
    }
    m_data[type] = data;
    contentsDidChange();
    return true;
}

bool KRPasteboard::setString(const QString& string, const QString& type) {
    return setData(string.toUtf8(), type);
}

std::optional<QByteArray> KRPasteboard::dataForType(const QString& type) const {
    return readData(type);
}

std::optional<QString> KRPasteboard::stringForType(const QString& type) const {
    const std::optional<QByteArray> data = readData(type);
    if (!data) {
        return std::nullopt;
    }
    return QString::fromUtf8(*data);
}

QString KRPasteboard::availableTypeFromArray(const QStringList& types) const {
    const QStringList held = readTypes();
    for (const QString& type : types) {
        if (held.contains(type)) {
            return type;
        }
    }
    return QString();
}

QStringList KRPasteboard::types() const {
    return readTypes();
}

KRInteger KRPasteboard::changeCount() const {
    return readChangeCount();
}

std::optional<QByteArray> KRPasteboard::readData(const QString& type) const {
    const auto found = m_data.find(type);
    if (found == m_data.end()) {
        return std::nullopt;
    }
    return found->second;
}

QStringList KRPasteboard::readTypes() const {
    QStringList result;
    for (const QString& type : m_declaredTypes) {
        if (m_data.count(type) != 0) {
            result.append(type);
        }
    }
    return result;
}
