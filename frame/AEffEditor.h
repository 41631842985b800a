#pragma once
#include "AEffect.h"
#include "Export.h"

class AudioEffect;

// The editor (user interface) interface. No effect of this module installs one;
// only its slot order matters to the frame's dispatcher.
class AF_EXPORT AEffEditor {
public:
    virtual ~AEffEditor() = default;                              // slot 0
    virtual AudioEffect* getEffect() { return nullptr; }          // slot 1
    virtual bool getRect(ERect** rect) { (void)rect; return false; }  // slot 2
    virtual bool open(void* parentWindow) { (void)parentWindow; return false; }  // slot 3
    virtual void close() {}                                       // slot 4
    virtual bool isOpen() { return false; }                       // slot 5
    virtual void idle() {}                                        // slot 6
    virtual bool onKeyDown(VstKeyCode& keyCode) { (void)keyCode; return false; }  // slot 7
    virtual bool onKeyUp(VstKeyCode& keyCode) { (void)keyCode; return false; }    // slot 8
    virtual bool onWheel(float distance) { (void)distance; return false; }        // slot 9
    virtual bool setKnobMode(VstInt32 mode) { (void)mode; return false; }         // slot 10
};
