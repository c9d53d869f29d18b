#pragma once

#include "QmsCli.h"

// One entry per sub-command of qms. Each is defined in its own source file.
struct QmsCommand {
    const char* name;
    const char* usage;
    const char* summary;
    int (*run)(QmsContext& context, const std::vector<std::string>& words);
};

// The table, in the order `qms help` lists it.
const std::vector<QmsCommand>& QmsCommandTable();
// Registers the persistent types of every library; called once at start.
void QmsRegisterAllTypes();

int QmsRunNew(QmsContext& context, const std::vector<std::string>& words);
int QmsRunInfo(QmsContext& context, const std::vector<std::string>& words);
int QmsRunSave(QmsContext& context, const std::vector<std::string>& words);
int QmsRunDemo(QmsContext& context, const std::vector<std::string>& words);
int QmsRunPrefs(QmsContext& context, const std::vector<std::string>& words);
int QmsRunScene(QmsContext& context, const std::vector<std::string>& words);
int QmsRunElement(QmsContext& context, const std::vector<std::string>& words);
int QmsRunDump(QmsContext& context, const std::vector<std::string>& words);
int QmsRunCurve(QmsContext& context, const std::vector<std::string>& words);
int QmsRunPath(QmsContext& context, const std::vector<std::string>& words);
int QmsRunLipsync(QmsContext& context, const std::vector<std::string>& words);
int QmsRunGeom(QmsContext& context, const std::vector<std::string>& words);
int QmsRunImage(QmsContext& context, const std::vector<std::string>& words);
int QmsRunDrawing(QmsContext& context, const std::vector<std::string>& words);
int QmsRunCells(QmsContext& context, const std::vector<std::string>& words);
int QmsRunPlay(QmsContext& context, const std::vector<std::string>& words);
int QmsRunPalette(QmsContext& context, const std::vector<std::string>& words);
