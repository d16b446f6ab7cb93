/* Compiled with contraction on: the sum becomes a fused multiply-add. */
float fusedSum(float a, float b, float c);

float fusedSum(float a, float b, float c) {
    return a * b + c;
}
