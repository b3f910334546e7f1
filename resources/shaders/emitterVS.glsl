// Particles, vertex stage: makes a quad that faces the camera. The normal is the particle's
// centre, the second texture coordinate its size (s) and its spin in degrees (t), and the vertex is
// a corner of the unit quad.

varying vec4 color;

mat4 setRotation(float degAngle, float x, float y, float z) {
    float angle = radians(-degAngle);
    float c = cos(angle);
    float s = sin(angle);
    float u = 1.0 - c;
    return mat4(x * x * u + c, y * x * u + z * s, z * x * u - y * s, 0.0,
                x * y * u - z * s, y * y * u + c, z * y * u + x * s, 0.0,
                x * z * u + y * s, y * z * u - x * s, z * z * u + c, 0.0,
                0.0, 0.0, 0.0, 1.0);
}

void main() {
    gl_TexCoord[0] = gl_MultiTexCoord0;
    gl_TexCoord[1] = gl_MultiTexCoord1;
    color = gl_Color;

    // On purpose: negated here and once more inside.
    mat4 mat_spinning = setRotation(-gl_TexCoord[1].t, 0.0, 0.0, 1.0);

    // The translation alone survives: the quad faces the camera.
    float size = gl_TexCoord[1].s;
    mat4 modelview = gl_ModelViewMatrix;
    modelview[0].xyz = vec3(size, 0.0, 0.0);
    modelview[1].xyz = vec3(0.0, size, 0.0);
    modelview[2].xyz = vec3(0.0, 0.0, size);

    vec4 newPos = mat_spinning * gl_Vertex;
    // On purpose: the centre is added before the scale, which moves it too.
    newPos.xyz += gl_Normal;
    gl_Position = gl_ProjectionMatrix * modelview * newPos;
}
