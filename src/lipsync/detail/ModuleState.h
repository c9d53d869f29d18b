#pragma once

// Resets of the module-level state of the analysis, called by the manager's tear-down.
void LipsyncResetFrontEnd();
void LipsyncResetRecogniser();
void LipsyncResetNetwork();
