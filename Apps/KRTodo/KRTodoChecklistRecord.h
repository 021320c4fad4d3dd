#pragma once

#include <QString>

// One checklist as the database keeps it: its row, its name and its place among the others.
struct KRTodoChecklistRecord {
    qint64 identifier = 0;
    QString name;
    double position = 0.0;
};
