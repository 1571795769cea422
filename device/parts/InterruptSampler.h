#pragma once

namespace lxm {

class Session;
class Shape;

// The board's interrupt line, read through the port-line exchange: the first reply byte holds
// it in bit 7, low while the sensor asserts its interrupt. One lamp shows the line, the other
// flips on every sample so that repeated samples of an unchanged line can be told apart.
class InterruptSampler {
public:
    InterruptSampler(Session& session, Shape* lineLamp, Shape* activityLamp);

    // The user's sample. While a collection holds the board it is taken at that pass's
    // sampling point instead, so that it never lands between two halves of the loop's exchange.
    void Sample();
    // The collection pass's sampling point; the pass holds the board. Samples when asked to on
    // every pass or when a sample is waiting.
    void Pass(bool everyPass);

    bool IntLineActive() const { return lineActive_; }
    bool samplePending() const { return pending_; }

private:
    void Exchange();

    Session& s_;
    Shape* lineLamp_;
    Shape* activityLamp_;
    bool lineActive_ = false;
    bool pending_ = false;
};

}  // namespace lxm
