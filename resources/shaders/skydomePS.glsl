// Sky: its texture, brightened a little by the scene's ambient light.

uniform sampler2D textureSampler0;

void main() {
    gl_FragColor = vec4(texture2D(textureSampler0, gl_TexCoord[0].xy).rgb +
                            gl_LightModel.ambient.rgb * 0.2,
                        1.0);
}
