#pragma once

#include "Foundation/KRObject.h"
#include "Foundation/KRTypes.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>
#include <memory>
#include <optional>

// The plain-text type; on the system clipboard it is text/plain.
inline const QString KRPasteboardTypeString = QStringLiteral("public.utf8-plain-text");
// Styled text as HTML, under its MIME name so other applications read and write it as it is.
inline const QString KRPasteboardTypeHTML = QStringLiteral("text/html");

// A place to copy to and paste from, holding one item in several representations (types). A writer
// declares the types it will provide, in order of preference, then sets the data of each. The general
// pasteboard is the system clipboard; tests swap in an in-memory one.
class KRPasteboard {
public:
    virtual ~KRPasteboard();

    static std::shared_ptr<KRPasteboard> generalPasteboard();
    // Replaces the general pasteboard; null brings back the clipboard-backed one.
    static void setGeneralPasteboard(std::shared_ptr<KRPasteboard> pasteboard);
    static std::shared_ptr<KRPasteboard> makeInMemory();

    // The MIME name a type travels under on the system clipboard, so that other processes (and other
    // applications) find it. The plain-text type is text/plain; a type that is a MIME name already keeps
    // it; a type registered here gets its MIME name; any other type travels as "application/x-" + type.
    // Registering answers the type, so a constant can register itself where it is defined.
    static QString registerMimeTypeForType(const QString& mimeType, const QString& type);
    static QString mimeTypeForType(const QString& type);
    // The reverse: the type a clipboard format stands for (text/plain with any parameters is the
    // plain-text type); a format no type maps to is answered as it is.
    static QString typeForMimeType(const QString& mimeType);

    // Clears the pasteboard and records the types about to be provided. Answers the new change count.
    KRInteger declareTypes(const QStringList& types, KRObject* owner);
    // Both refuse (answer false, store nothing) a type that was not declared.
    bool setData(const QByteArray& data, const QString& type);
    bool setString(const QString& string, const QString& type);
    std::optional<QByteArray> dataForType(const QString& type) const;
    // Data of the type read as UTF-8.
    std::optional<QString> stringForType(const QString& type) const;
    // The first of types the pasteboard holds, or an empty string.
    QString availableTypeFromArray(const QStringList& types) const;
    // The types that hold data, in the order declared.
    QStringList types() const;
    // Grows with every declareTypes (and, for the clipboard, with every change made by others).
    KRInteger changeCount() const;
    KRObject* owner() const { return m_owner.get(); }

protected:
    KRPasteboard() = default;

    QStringList declaredTypes() const { return m_declaredTypes; }
    const std::map<QString, QByteArray>& storedData() const { return m_data; }

    // Hooks of the clipboard-backed pasteboard: told after every change, asked on every read.
    virtual void contentsDidChange() {}
    virtual std::optional<QByteArray> readData(const QString& type) const;
    virtual QStringList readTypes() const;
    virtual KRInteger readChangeCount() const { return m_changeCount; }
    KRInteger bumpChangeCount() { return ++m_changeCount; }

private:
    QStringList m_declaredTypes;
    std::map<QString, QByteArray> m_data;
    KRWeak<KRObject> m_owner;
    KRInteger m_changeCount = 0;
};
